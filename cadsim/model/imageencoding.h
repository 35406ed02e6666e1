#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <optional>

// The image types and compressions of the TIF and PSD export options.
enum class ImageType { Bilevel = 0, Rgb = 1, Grey = 2 };
enum class ImageCompression { None = 0, PackBits = 1, Group4Fax = 2 };

struct ImageOptions
{
    ImageType type = ImageType::Rgb;
    ImageCompression compression = ImageCompression::None;
};

// The picture as the image type holds it: bilevel (threshold at mid grey),
// 8-bit grey or 24-bit colour.
QImage convertToImageType(const QImage &image, ImageType type);

// A TIFF file through libtiff. Group 4 fax compresses bilevel pictures
// only, so it writes the picture bilevel whatever the type. description
// goes into the image description tag. Empty when the file could not be
// written (a null picture, an encoder failure).
std::optional<QByteArray> encodeTiff(const QImage &image, const ImageOptions &options, const QString &description);

// Any format Qt's image writers know (format as QImageWriter names it),
// with a "Description" text; empty when the writer refused.
std::optional<QByteArray> encodeImage(const QImage &image, const char *format, const QString &description);
