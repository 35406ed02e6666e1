#include "run/filelistxml.h"

#include <QDomDocument>
#include <QDomElement>

#include <limits>

namespace FileListXml {

namespace {

const QString SelsTag = QStringLiteral("sels");
const QString SelTag = QStringLiteral("sel");
const QString DocIdTag = QStringLiteral("doc_id");
const QString ProjIdTag = QStringLiteral("proj_id");
const QString PathTag = QStringLiteral("path");
const QString VerTag = QStringLiteral("ver");
const QString ConfTag = QStringLiteral("conf");
const QString ExtraTag = QStringLiteral("extra");

// Builds <tag>text</tag> under parent; false when text cannot be written.
bool appendTextElement(QDomDocument &doc, QDomElement &parent, const QString &tag, const QString &text)
{
    if (!isXmlText(text))
        return false;
    QDomElement element = doc.createElement(tag);
    element.appendChild(doc.createTextNode(text));
    parent.appendChild(element);
    return true;
}

} // namespace

HRESULT write(const std::vector<FileRecord> &records, std::int32_t taskType, QString &xml)
{
    xml.clear();
    QDomDocument doc;
    QDomElement root = doc.createElement(SelsTag);
    doc.appendChild(root);
    for (const FileRecord &record : records) {
        if (record.isErrorLog)
            continue;
        const FileRecord &selected = record.source ? *record.source : record;
        QDomElement sel = doc.createElement(SelTag);
        bool ok = appendTextElement(doc, sel, DocIdTag, QString::number(selected.docId))
               && appendTextElement(doc, sel, ProjIdTag, QString::number(selected.projId))
               && appendTextElement(doc, sel, PathTag, selected.path)
               && appendTextElement(doc, sel, VerTag, QString::number(selected.version));
        if (ok && record.source) {
            ok = appendTextElement(doc, sel, ConfTag, record.conf);
            if (ok && taskType != 2)
                ok = appendTextElement(doc, sel, ExtraTag, record.path);
            else if (ok && record.isPrintEntry)
                ok = appendTextElement(doc, sel, ExtraTag, record.info);
        }
        if (!ok)
            return E_INVALIDARG;
        root.appendChild(sel);
    }
    xml = doc.toString(-1);
    return S_OK;
}

bool isXmlText(const QString &text)
{
    const qsizetype size = text.size();
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t c = text.at(i).unicode();
        if (c < 0x20) {
            if (c != u'\t' && c != u'\n' && c != u'\r')
                return false;
        } else if (c == 0xFFFE || c == 0xFFFF) {
            return false;
        } else if (QChar::isHighSurrogate(c)) {
            if (i + 1 >= size || !QChar::isLowSurrogate(text.at(i + 1).unicode()))
                return false;
            ++i;
        } else if (QChar::isLowSurrogate(c)) {
            return false;
        }
    }
    return true;
}

std::vector<FileRecord> read(const QString &xml)
{
    std::vector<FileRecord> records;
    QDomDocument doc;
    if (!doc.setContent(xml))
        return records;
    const QDomNodeList sels = doc.elementsByTagName(SelTag);
    records.reserve(static_cast<size_t>(sels.size()));
    for (int i = 0; i < sels.size(); ++i) {
        FileRecord record;
        for (QDomElement child = sels.at(i).firstChildElement(); !child.isNull();
             child = child.nextSiblingElement()) {
            const QString tag = child.tagName();
            if (tag == PathTag)
                record.path = child.text();
            else if (tag == ConfTag)
                record.conf = child.text();
            else if (tag == ExtraTag)
                record.info = child.text();
            else if (tag == VerTag)
                record.version = toLong(child.text());
            else if (tag == DocIdTag)
                record.docId = toLong(child.text());
            else if (tag == ProjIdTag)
                record.projId = toLong(child.text());
        }
        records.push_back(std::move(record));
    }
    return records;
}

std::int32_t toLong(const QString &text)
{
    qsizetype at = 0;
    const qsizetype size = text.size();
    auto isBlank = [](QChar c) {
        return c == u' ' || c == u'\t' || c == u'\n' || c == u'\v' || c == u'\f' || c == u'\r';
    };
    while (at < size && isBlank(text.at(at)))
        ++at;
    bool negative = false;
    if (at < size && (text.at(at) == u'+' || text.at(at) == u'-')) {
        negative = text.at(at) == u'-';
        ++at;
    }
    constexpr std::int64_t Limit = std::int64_t(std::numeric_limits<std::int32_t>::max()) + 1;
    std::int64_t value = 0;
    for (; at < size && text.at(at) >= u'0' && text.at(at) <= u'9'; ++at) {
        value = value * 10 + (text.at(at).unicode() - u'0');
        if (value > Limit)
            value = Limit; // keeps growing digits from overflowing
    }
    if (negative)
        return static_cast<std::int32_t>(-value < std::numeric_limits<std::int32_t>::min()
                                             ? std::numeric_limits<std::int32_t>::min()
                                             : -value);
    return static_cast<std::int32_t>(qMin<std::int64_t>(value, std::numeric_limits<std::int32_t>::max()));
}

} // namespace FileListXml
