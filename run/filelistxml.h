#pragma once

#include "host/hresult.h"
#include "run/filerecord.h"

#include <QString>
#include <cstdint>
#include <vector>

// The XML text in which a file list is kept in a task variable:
//   <sels><sel><doc_id/><proj_id/><path/><ver/>[<conf/><extra/>]</sel>...</sels>
// Records with a source are written with their source's ids, path and
// version and their own conf and extra. Error logs are left out.
namespace FileListXml {

// taskType decides "extra": 2 (print) writes a print entry's info and
// nothing for other records; any other type writes the produced file's path.
// A value holding a character that XML cannot carry (control characters,
// lone surrogates, U+FFFE, U+FFFF) fails with E_INVALIDARG and no text.
HRESULT write(const std::vector<FileRecord> &records, std::int32_t taskType, QString &xml);

// Whether every character of text can stand in an XML document.
bool isXmlText(const QString &text);

// Every "sel" element anywhere in the document gives one record, in document
// order; "extra" lands in info. Text that is not well-formed gives no
// records, and so does a document nested deeper than MaxDepth elements
// (the list itself needs three).
inline constexpr int MaxDepth = 16;
std::vector<FileRecord> read(const QString &xml);

// False when an element of xml lies deeper than maxDepth; looks without
// building a tree.
bool withinDepth(const QString &xml, int maxDepth);

} // namespace FileListXml
