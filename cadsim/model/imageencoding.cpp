#include "cadsim/model/imageencoding.h"

#include <QBuffer>
#include <QImageWriter>

#include <tiffio.h>

#include <cstring>

namespace {

// libtiff writes through these callbacks into memory.
struct MemoryFile
{
    QByteArray data;
    toff_t position = 0;
};

tmsize_t readMemory(thandle_t h, void *buffer, tmsize_t size)
{
    auto *f = static_cast<MemoryFile *>(h);
    const tmsize_t n = qBound<tmsize_t>(0, tmsize_t(f->data.size()) - tmsize_t(f->position), size);
    std::memcpy(buffer, f->data.constData() + f->position, size_t(n));
    f->position += toff_t(n);
    return n;
}

tmsize_t writeMemory(thandle_t h, void *buffer, tmsize_t size)
{
    auto *f = static_cast<MemoryFile *>(h);
    const toff_t end = f->position + toff_t(size);
    if (end > toff_t(f->data.size()))
        f->data.resize(qsizetype(end));
    std::memcpy(f->data.data() + f->position, buffer, size_t(size));
    f->position = end;
    return size;
}

toff_t seekMemory(thandle_t h, toff_t offset, int whence)
{
    auto *f = static_cast<MemoryFile *>(h);
    switch (whence) {
    case SEEK_SET: f->position = offset; break;
    case SEEK_CUR: f->position += offset; break;
    case SEEK_END: f->position = toff_t(f->data.size()) + offset; break;
    default: return toff_t(-1);
    }
    return f->position;
}

int closeMemory(thandle_t) { return 0; }
toff_t sizeOfMemory(thandle_t h) { return toff_t(static_cast<MemoryFile *>(h)->data.size()); }
int mapMemory(thandle_t, void **, toff_t *) { return 0; }
void unmapMemory(thandle_t, void *, toff_t) {}

} // namespace

QImage convertToImageType(const QImage &image, ImageType type)
{
    switch (type) {
    case ImageType::Bilevel: {
        QImage mono = image.convertToFormat(QImage::Format_Mono, Qt::ThresholdDither | Qt::MonoOnly);
        return mono;
    }
    case ImageType::Grey: return image.convertToFormat(QImage::Format_Grayscale8);
    case ImageType::Rgb: break;
    }
    return image.convertToFormat(QImage::Format_RGB888);
}

std::optional<QByteArray> encodeTiff(const QImage &image, const ImageOptions &options, const QString &description)
{
    if (image.isNull())
        return std::nullopt;
    const ImageType type = options.compression == ImageCompression::Group4Fax ? ImageType::Bilevel : options.type;
    const QImage picture = convertToImageType(image, type);
    MemoryFile file;
    TIFF *tif = TIFFClientOpen("export.tif", "w", &file, readMemory, writeMemory, seekMemory, closeMemory,
                               sizeOfMemory, mapMemory, unmapMemory);
    if (!tif)
        return std::nullopt;
    const bool bilevel = type == ImageType::Bilevel;
    const int samples = type == ImageType::Rgb ? 3 : 1;
    const QByteArray text = description.toUtf8();
    uint16_t compression = COMPRESSION_NONE;
    if (options.compression == ImageCompression::PackBits)
        compression = COMPRESSION_PACKBITS;
    else if (options.compression == ImageCompression::Group4Fax)
        compression = COMPRESSION_CCITTFAX4;
    bool ok = TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, uint32_t(picture.width()))
              && TIFFSetField(tif, TIFFTAG_IMAGELENGTH, uint32_t(picture.height()))
              && TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, uint16_t(bilevel ? 1 : 8))
              && TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, uint16_t(samples))
              && TIFFSetField(tif, TIFFTAG_PLANARCONFIG, uint16_t(PLANARCONFIG_CONTIG))
              && TIFFSetField(tif, TIFFTAG_PHOTOMETRIC,
                              uint16_t(type == ImageType::Rgb ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK))
              && TIFFSetField(tif, TIFFTAG_COMPRESSION, compression)
              && TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, uint32_t(picture.height()))
              && TIFFSetField(tif, TIFFTAG_RESOLUTIONUNIT, uint16_t(RESUNIT_INCH))
              && TIFFSetField(tif, TIFFTAG_XRESOLUTION, float(picture.dotsPerMeterX() * 0.0254))
              && TIFFSetField(tif, TIFFTAG_YRESOLUTION, float(picture.dotsPerMeterY() * 0.0254))
              && TIFFSetField(tif, TIFFTAG_SOFTWARE, "mcsim")
              && TIFFSetField(tif, TIFFTAG_IMAGEDESCRIPTION, text.constData());
    QByteArray row;
    for (int y = 0; ok && y < picture.height(); ++y) {
        row = QByteArray(reinterpret_cast<const char *>(picture.constScanLine(y)),
                         bilevel ? (picture.width() + 7) / 8 : picture.width() * samples);
        if (bilevel && picture.color(0) != qRgb(0, 0, 0))
            for (char &c : row) // index 1 is black: make a set bit white, as min-is-black reads
                c = char(~c);
        ok = TIFFWriteScanline(tif, row.data(), uint32_t(y), 0) == 1;
    }
    ok = ok && TIFFWriteDirectory(tif);
    TIFFClose(tif);
    if (!ok)
        return std::nullopt;
    return file.data;
}

std::optional<QByteArray> encodeImage(const QImage &image, const char *format, const QString &description)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setText(QStringLiteral("Description"), description);
    if (!writer.write(image))
        return std::nullopt;
    return buffer.data();
}
