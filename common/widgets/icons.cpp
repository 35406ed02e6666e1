#include "common/widgets/icons.h"

#include <QMimeDatabase>

#include <map>

namespace {

// Number -> image. The images are from a free icon theme (see
// common/icons/README.md); one image serves each number.
const std::map<int, const char *> &imageMap()
{
    static const std::map<int, const char *> map{
        {121, "text-x-preview"},             // details: a file with a state
        {122, "folder"},                     // source file path
        {131, "x-office-presentation"},      // workflow state
        {156, "x-office-document-template"}, // version number
        {157, "x-office-address-book"},      // card variable
        {158, "text-x-generic-template"},    // revision number
        {164, "x-office-spreadsheet"},       // configuration
        {189, "x-office-drawing"},           // sheet
        {220, "text-x-generic"},             // free text
        {229, "text-x-script"},              // the add-in: script, file name, printer list
        {257, "folder-open"},                // details: found in
        {260, "x-office-calendar"},          // date and time
    };
    return map;
}

} // namespace

// Resources of a static library are registered by hand, outside any namespace.
static void initIconResources()
{
    static const bool done = [] {
        Q_INIT_RESOURCE(icons);
        return true;
    }();
    (void)done;
}

namespace ProjectIcons {

QString imageName(int number)
{
    const auto it = imageMap().find(number);
    return it == imageMap().end() ? QString() : QString::fromLatin1(it->second);
}

QIcon icon(int number)
{
    const QString name = imageName(number);
    if (name.isEmpty())
        return {};
    initIconResources();
    QIcon icon;
    for (const int size : {16, 32})
        icon.addFile(QStringLiteral(":/icons/%1/%2.png").arg(size).arg(name), QSize(size, size));
    return icon;
}

QList<int> numbers()
{
    QList<int> list;
    for (const auto &[number, name] : imageMap())
        list.append(number);
    return list;
}

QIcon fileTypeIcon(const QString &path, bool folder)
{
    if (folder)
        return QIcon::fromTheme(QStringLiteral("folder"), icon(122));
    // Windows paths: the name is what follows the last backslash.
    const QString name = path.mid(path.lastIndexOf(QLatin1Char('\\')) + 1);
    const QMimeType type = QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension);
    return QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName(), icon(220)));
}

} // namespace ProjectIcons
