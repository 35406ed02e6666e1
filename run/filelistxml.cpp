#include "run/filelistxml.h"

#include "base/leadinginteger.h"

#include <QDomDocument>
#include <QXmlStreamReader>
#include <QDomElement>


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

// Builds <tag>text</tag> under parent.
void appendTextElement(QDomDocument &doc, QDomNode &parent, const QString &tag, const QString &text)
{
    parent.appendChild(doc.createElement(tag)).appendChild(doc.createTextNode(text));
}

// As above for a value that may hold characters XML cannot carry.
bool appendCheckedTextElement(QDomDocument &doc, QDomNode &parent, const QString &tag, const QString &text)
{
    if (!isXmlText(text))
        return false;
    appendTextElement(doc, parent, tag, text);
    return true;
}

// An element's text; the usual element holds one text node and nothing else.
QString elementText(const QDomElement &element)
{
    const QDomNode first = element.firstChild();
    if (first.isText() && first.nextSibling().isNull())
        return first.nodeValue();
    return element.text();
}

FileRecord readSel(const QDomElement &sel)
{
    FileRecord record;
    for (QDomElement child = sel.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
        const QString tag = child.tagName();
        if (tag == PathTag)
            record.path = elementText(child);
        else if (tag == ConfTag)
            record.conf = elementText(child);
        else if (tag == ExtraTag)
            record.info = elementText(child);
        else if (tag == VerTag)
            record.version = leadingInteger(elementText(child));
        else if (tag == DocIdTag)
            record.docId = leadingInteger(elementText(child));
        else if (tag == ProjIdTag)
            record.projId = leadingInteger(elementText(child));
    }
    return record;
}

} // namespace

HRESULT write(const std::vector<FileRecord> &records, std::int32_t taskType, QString &xml)
{
    xml.clear();
    QDomDocument doc;
    QDomNode root = doc.appendChild(doc.createElement(SelsTag));
    for (const FileRecord &record : records) {
        if (record.isErrorLog)
            continue;
        const FileRecord &selected = record.source ? *record.source : record;
        QDomNode sel = root.appendChild(doc.createElement(SelTag));
        appendTextElement(doc, sel, DocIdTag, QString::number(selected.docId));
        appendTextElement(doc, sel, ProjIdTag, QString::number(selected.projId));
        bool ok = appendCheckedTextElement(doc, sel, PathTag, selected.path);
        if (ok)
            appendTextElement(doc, sel, VerTag, QString::number(selected.version));
        if (ok && record.source) {
            ok = appendCheckedTextElement(doc, sel, ConfTag, record.conf);
            if (ok && taskType != 2)
                ok = appendCheckedTextElement(doc, sel, ExtraTag, record.path);
            else if (ok && record.isPrintEntry)
                ok = appendCheckedTextElement(doc, sel, ExtraTag, record.info);
        }
        if (!ok)
            return E_INVALIDARG;
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

bool withinDepth(const QString &xml, int maxDepth)
{
    QXmlStreamReader reader(xml);
    int depth = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++depth > maxDepth)
                return false;
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        default:
            break;
        }
    }
    return true; // well-formedness is the DOM's to judge
}

std::vector<FileRecord> read(const QString &xml)
{
    std::vector<FileRecord> records;
    // The text comes from a variable that another client may have written or
    // damaged; the DOM builds deep trees recursively, so they are refused
    // first, with a flat look.
    if (!withinDepth(xml, MaxDepth))
        return records;
    QDomDocument doc;
    if (!doc.setContent(xml))
        return records;
    const QDomNodeList sels = doc.elementsByTagName(SelTag);
    const int count = sels.size();
    records.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        records.push_back(readSel(sels.at(i).toElement()));
    return records;
}

} // namespace FileListXml
