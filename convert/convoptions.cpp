#include "convert/convoptions.h"

#include "settings/tasksettings.h"
#include "common/translator.h"
#include "common/widgets/strwnd.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>
#include <QWidget>

namespace {

using C = ConvOpControl;

const std::vector<ConvOpChoice> Units{
    {28, "Millimeters", 0}, {29, "Centimeters", 1}, {30, "Meters", 2}, {31, "Inches", 3}, {32, "Feets", 4}};
const std::vector<ConvOpChoice> AcisVersions{
    {0, "18.0", 18}, {0, "17.0", 17}, {0, "16.0", 16}, {0, "15.0", 15}, {0, "14.0", 14}, {0, "13.0", 13},
    {0, "12.0", 12}, {0, "11.0", 11}, {0, "10.0", 10}, {0, "8.0", 9},   {0, "7.0", 8},   {0, "6.0", 7},
    {0, "5.0", 6},   {0, "4.0", 5},   {0, "3.0", 4},   {0, "2.1", 3},   {0, "2.0", 2},   {0, "1.7", 1},
    {0, "1.6", 0}};
const std::vector<ConvOpChoice> ParasolidVersions{
    {0, "19.1", 17}, {0, "18.1", 16}, {0, "17.1", 15}, {0, "16.1", 14}, {0, "16.0", 13}, {0, "15.1", 12},
    {0, "15.0", 11}, {0, "14.0", 10}, {0, "13.0", 9},  {0, "12.1", 8},  {0, "12.0", 7},  {0, "11.1", 6},
    {0, "11.0", 5},  {0, "10.0", 4},  {0, "9.1", 3},   {0, "9.0", 2},   {0, "8.0", 1}};
const std::vector<ConvOpChoice> IgesSurfaces{
    {33, "Trimmed Surface (type 144)", 0}, {34, "Manifold Solid B-rep Objectsurface (type 186)", 3}};
const std::vector<ConvOpChoice> IgesCurves{
    {35, "B-Splines (Entity type 126)", 0}, {36, "Parametric Splines (Entity type 112)", 1}};
const std::vector<ConvOpChoice> IgesSystems{
    {37, "STANDARD", 0}, {38, "NURBS", 1},  {47, "ALIAS", 10},   {45, "ALPHACAM", 8},
    {39, "ANSYS", 2},    {40, "VERANT", 3}, {41, "MASCAM", 4},   {46, "MULTICAM", 9},
    {42, "SURFCAM", 5},  {43, "SMARTCAM", 6}, {44, "TEKSOFT", 7}};
const std::vector<ConvOpChoice> StepVersions{{0, "AP203", 203}, {0, "AP214", 214}};
const std::vector<ConvOpChoice> TifImageTypes{
    {48, "Black & white (bilevel)", 0}, {49, "RGB full color", 1}, {50, "Gray scale", 2}};
const std::vector<ConvOpChoice> TifCompressions{{51, "Uncompressed", 0}, {52, "Packbits", 1}, {53, "Group 4 Fax", 2}};

C check(int id, const char *text)
{
    C c;
    c.kind = C::Check;
    c.ids[0] = id;
    c.texts[0] = text;
    return c;
}

C combo(int id, const char *label, const std::vector<ConvOpChoice> &choices)
{
    C c;
    c.kind = C::Combo;
    c.ids[0] = id;
    c.texts[0] = label;
    c.choices = &choices;
    return c;
}

C radios(int id0, const char *text0, std::int32_t value0, int id1, const char *text1, std::int32_t value1)
{
    C c;
    c.kind = C::Radios;
    c.ids[0] = id0;
    c.ids[1] = id1;
    c.texts[0] = text0;
    c.texts[1] = text1;
    c.values[0] = value0;
    c.values[1] = value1;
    return c;
}

C explained(C c, const char *note)
{
    c.note = note;
    return c;
}

C geometry(int solidId, int curvesId)
{
    C c = radios(solidId, "Solid/Surface geometry", 0, curvesId, "3D curves", 1);
    c.kind = C::Geometry;
    return c;
}

const std::vector<ConvOpPageInfo> &pages()
{
    static const std::vector<ConvOpPageInfo> list{
        {"ConvOpPDFDlg", "ConvOpPDFDlg", 110, {4},
         {{"PdfInColor", true, 1, 1, check(245, "&Export PDF in color")},
          {"PdfEmbedFonts", true, 1, 1, check(325, "E&mbed fonts")},
          {"PdfHighQuality", true, 0, 0, check(327, "&High quality")},
          {"PdfPrintHeaderFooter", true, 0, 0, check(328, "&Print header/footer")},
          {"PdfUsePrinterLineWeights", true, 1, 1, check(329, "Use specified printer line &weights")}}},
        {"ConvOpGlimpseDlg", "ConvOpGlimpseDlg", 111, {9},
         {{"GlmpOkayToMeasure", true, 0, 0,
           explained(check(245, "Okay to measure this Glimpse file"),
                     "Readers of the file may measure distances and angles in its geometry.")},
          {"GlmpAllowExportOfSTL", true, 0, 0,
           explained(check(330, "Allow export to STL for parts && assemblies"),
                     "Readers of the file may save its parts and assemblies again as STL.")},
          {"GlmpSaveShadedData", true, 1, 1,
           explained(check(331, "Save shaded data in drawings"),
                     "Shaded views of drawings stay shaded in the file; the file grows.")},
          {"GlmpSaveBOM", true, 1, 1,
           explained(check(332, "Save Bill of Materials features to Glimpse file"),
                     "The bills of materials of the document can be read in the file.")},
          {"GlmpSaveMotionStudies", true, 1, 1,
           explained(check(333, "Save Motion Studies to Glimpse file"),
                     "The motion studies of an assembly can be played in the file.")},
          {"GlmpSaveMotionStudiesToAllConfs", true, 0, 0,
           radios(334, "Save each motion study in every configuration.", 1, 335,
                  "Save only in last calculated configuration.", 0),
           {{"GlmpSaveMotionStudies", 1}}},
          {"GlmpRecalcMotionStudies", true, 1, 1,
           explained(check(329, "Recalculate the motion study if the results are out of date."),
                     "Otherwise results that are out of date are saved as they are."),
           {{"GlmpSaveMotionStudies", 1}, {"GlmpSaveMotionStudiesToAllConfs", 0}}}}},
        {"ConvOpVRMLDlg", "ConvOpVRMLDlg", 112, {22},
         {{"VrmlOutputAsUnit", false, 0, 2, combo(351, "Output as:", Units)},
          {"VrmlSaveAssemblyAsOneFile", true, 0, 1,
           check(245, "Save all components of the assembly in a single file")}}},
        {"ConvOpACISDlg", "ConvOpACISDlg", 113, {2},
         {{"AcisGeometry", false, 0, 0, geometry(352, 353)},
          {"AcisVersion", false, 18, 18, combo(354, "Version:", AcisVersions)},
          {"AcisOutputAsUnit", false, 0, 0, combo(351, "Output as:", Units)}}},
        {"ConvOpParasolidDlg", "ConvOpParasolidDlg", 114, {15, 16},
         {{"ParasolidVersion", false, 17, 17, combo(354, "Version:", ParasolidVersions)},
          {"ParasolidFlattenHierarchy", true, 0, 0, check(245, "Flatten assembly hierarchy")}}},
        {"ConvOpIGESDlg", "ConvOpIGESDlg", 115, {12},
         {{"IgesExportSolidSurface", true, 1, 1, check(245, "IGES solid/surface entities:")},
          {"IgesRepresentation", false, 0, 0, combo(360, "", IgesSurfaces), {{"IgesExportSolidSurface", 1}}},
          {"IgesExportWireframe", true, 0, 0, check(362, "IGES wireframe (3D curves):")},
          {"IgesCurveRepresentation", false, 0, 0, combo(361, "", IgesCurves), {{"IgesExportWireframe", 1}}},
          {"IgesSystem", false, 0, 0, combo(363, "Output as:", IgesSystems)},
          {"IgesExportFreeCurves", true, 1, 1, check(365, "Export 3D curve features")},
          {"IgesExportSketchEntities", true, 0, 0, check(366, "Export sketch entities")},
          {"IgesHighCurveAccuracy", true, 1, 1, check(367, "Use high trim curve accuracy")},
          {"IgesComponentsIntoOneFile", true, 1, 1, check(329, "Save all components of an assembly in one file")},
          {"IgesFlattenAssemblyHierarchy", true, 1, 1, check(368, "Flatten assembly hierarchy")}}},
        {"ConvOpSTLDlg", "ConvOpSTLDlg", 116, {18},
         {{"StlOutputAs", true, 1, 1, radios(369, "Binary", 1, 370, "ASCII", 0)},
          {"StlOutputAsUnit", false, 0, 0, combo(351, "Unit:", Units)},
          {"StlQuality", false, 1, 1, radios(373, "Coarse", 1, 374, "Fine", 2)},
          {"StlDontTranslatePositive", true, 0, 0, check(245, "Do not translate STL output data to positive space")},
          {"StlComponentsIntoOneFile", true, 0, 0, check(375, "Save all components of an assembly in a single file")},
          {"StlCheckForInterferences", true, 0, 0, check(376, "Check for interferences"),
           {{"StlComponentsIntoOneFile", 1}}}}},
        {"ConvOpTifPsdDlg", "ConvOpTifPsdDlg", 117, {5, 19},
         {{"TifImageType", false, 1, 1, combo(377, "Image type:", TifImageTypes)},
          {"TifCompressionScheme", false, 0, 0, combo(378, "Compression scheme:", TifCompressions)}}},
        {"ConvOpSTEPDlg", "ConvOpStepDlg", 120, {17},
         {{"StepGeometry", false, 0, 0, geometry(393, 395)},
          {"StepVersion", false, 203, 203, combo(354, "Version:", StepVersions)}}},
    };
    return list;
}

QString controlName(const ConvOpKey &key, int part)
{
    return QString::fromLatin1(key.key) + (part < 0 ? QString() : QStringLiteral("_%1").arg(part));
}

} // namespace

const ConvOpPageInfo *convOpPageFor(std::int32_t formatIndex)
{
    for (const ConvOpPageInfo &page : pages())
        for (const std::int32_t format : page.formats)
            if (format == formatIndex)
                return &page;
    return nullptr;
}

const std::vector<std::int32_t> &convOpStoreOrder()
{
    static const std::vector<std::int32_t> order{4, 9, 22, 2, 15, 16, 12, 17, 18, 19, 5};
    return order;
}

bool hasConvOpPage(std::int32_t formatIndex)
{
    return convOpPageFor(formatIndex) != nullptr;
}

bool isConvOpKey(const QString &key)
{
    for (const ConvOpPageInfo &page : pages())
        for (const ConvOpKey &entry : page.keys)
            if (key.compare(QLatin1String(entry.key), Qt::CaseInsensitive) == 0)
                return true;
    return false;
}

CConvOpDlg::CConvOpDlg(const ConvOpPageInfo &info, IDoxVariables &holder, TextLookup text)
    : m_info(info), m_holder(holder), m_text(std::move(text))
{
    for (const ConvOpKey &key : m_info.keys)
        m_values[QString::fromLatin1(key.key)] = key.newValue;
}

CConvOpDlg::~CConvOpDlg()
{
    delete m_window.data();
}

QString CConvOpDlg::text(std::int32_t number, const char *english) const
{
    // Number 0: a text of the table with no translation of its own.
    return number == 0 ? QString::fromLatin1(english) : lookupText(m_text, number, english);
}

std::int32_t CConvOpDlg::value(const QString &key) const
{
    const auto it = m_values.find(key);
    return it == m_values.end() ? 0 : it->second;
}

void CConvOpDlg::setValue(const QString &key, std::int32_t value)
{
    if (m_values.count(key))
        m_values[key] = value;
    showValues();
}

HRESULT CConvOpDlg::LoadVariables(bool reset)
{
    if (reset) {
        for (const ConvOpKey &key : m_info.keys)
            m_values[QString::fromLatin1(key.key)] = key.resetValue;
    } else {
        // Read in key order, as the members are mapped.
        for (auto &[name, member] : m_values) {
            const bool boolean = [&] {
                for (const ConvOpKey &key : m_info.keys)
                    if (name == QLatin1String(key.key))
                        return key.boolean;
                return false;
            }();
            HRESULT hr = S_OK;
            if (boolean) {
                bool stored = member != 0;
                hr = readBoolVariable(m_holder, name, stored, stored);
                if (hr == S_OK)
                    member = stored ? 1 : 0;
            } else {
                std::int32_t stored = member;
                hr = readIntVariable(m_holder, name, stored, stored);
                if (hr == S_OK)
                    member = stored;
            }
            if (failed(hr))
                return hr;
        }
    }
    showValues();
    return S_OK;
}

HRESULT CConvOpDlg::OnOK()
{
    VariableSaver saver(m_holder);
    for (const auto &[name, member] : m_values) {
        bool boolean = false;
        for (const ConvOpKey &key : m_info.keys)
            if (name == QLatin1String(key.key))
                boolean = key.boolean;
        if (boolean)
            saver.boolean(name, member != 0);
        else
            saver.integer(name, member);
    }
    return saver.result();
}

QWidget *CConvOpDlg::CreatePage(QWidget *parent)
{
    delete m_window.data();
    m_window = new QWidget(parent);
    m_window->setObjectName(QString::fromLatin1(m_info.name));
    auto *form = new QFormLayout(m_window);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    for (const ConvOpKey &key : m_info.keys)
        buildControl(key, m_window, form);
    (new StrWnd(m_window))->localise(QString::fromLatin1(m_info.name));
    showValues();
    return m_window;
}

void CConvOpDlg::buildControl(const ConvOpKey &key, QWidget *page, QFormLayout *form)
{
    const QString name = QString::fromLatin1(key.key);
    const ConvOpControl &c = key.control;
    switch (c.kind) {
    case ConvOpControl::Check: {
        auto *box = new QCheckBox(QString::fromLatin1(c.texts[0]), page);
        box->setObjectName(controlName(key, -1));
        QObject::connect(box, &QCheckBox::toggled, page, [this, name](bool on) {
            if (!m_showing)
                setValue(name, on ? 1 : 0);
        });
        form->addRow(box);
        break;
    }
    case ConvOpControl::Combo: {
        auto *list = new QComboBox(page);
        list->setObjectName(controlName(key, -1));
        for (const ConvOpChoice &choice : *c.choices)
            list->addItem(text(choice.textId, choice.english), choice.value);
        QObject::connect(list, &QComboBox::activated, page, [this, name, list](int index) {
            setValue(name, list->itemData(index).toInt());
        });
        if (*c.texts[0]) {
            auto *label = new QLabel(QString::fromLatin1(c.texts[0]), page);
            label->setObjectName(controlName(key, -1) + QStringLiteral("_label"));
            form->addRow(label, list);
        } else {
            form->addRow(QString(), list);
        }
        break;
    }
    case ConvOpControl::Radios:
    case ConvOpControl::Geometry: {
        auto *group = new QButtonGroup(page);
        auto *row = new QWidget(page);
        auto *layout = new QVBoxLayout(row);
        layout->setContentsMargins(0, 0, 0, 0);
        for (int i = 0; i < 2; ++i) {
            auto *radio = new QRadioButton(QString::fromLatin1(c.texts[i]), row);
            radio->setObjectName(controlName(key, i));
            group->addButton(radio, i);
            layout->addWidget(radio);
        }
        QCheckBox *sketches = nullptr;
        if (c.kind == ConvOpControl::Geometry) {
            sketches = new QCheckBox(QStringLiteral("Export sketch entities"), row);
            sketches->setObjectName(name + QStringLiteral("_sketches"));
            layout->addWidget(sketches);
            QObject::connect(sketches, &QCheckBox::toggled, page, [this, name](bool on) {
                if (!m_showing)
                    setValue(name, on ? 2 : 1);
            });
        }
        QObject::connect(group, &QButtonGroup::idClicked, page, [this, name, c, sketches](int id) {
            if (c.kind == ConvOpControl::Geometry && id == 1)
                setValue(name, sketches->isChecked() ? 2 : 1);
            else
                setValue(name, c.values[id]);
        });
        form->addRow(row);
        break;
    }
    }
    if (c.note) {
        auto *note = new QLabel(QString::fromLatin1(c.note), page);
        note->setObjectName(name + QStringLiteral("_note"));
        note->setWordWrap(true);
        note->setIndent(note->fontMetrics().averageCharWidth() * 3);
        form->addRow(note);
    }
}

// Members to controls: check boxes, combos, radios and what they enable.
void CConvOpDlg::showValues()
{
    UpdateControlStates();
}

void CConvOpDlg::UpdateControlStates()
{
    if (!m_window)
        return;
    m_showing = true;
    for (const ConvOpKey &key : m_info.keys) {
        const std::int32_t member = value(QString::fromLatin1(key.key));
        const ConvOpControl &c = key.control;
        bool enabled = true;
        for (const auto &[other, wanted] : key.enabledWhen)
            enabled = enabled && value(QString::fromLatin1(other)) == wanted;
        if (c.kind == ConvOpControl::Check) {
            if (auto *box = m_window->findChild<QCheckBox *>(controlName(key, -1)))
                box->setChecked(member != 0);
        } else if (c.kind == ConvOpControl::Combo) {
            // A value without an entry leaves the list without a selection.
            if (auto *list = m_window->findChild<QComboBox *>(controlName(key, -1)))
                list->setCurrentIndex(list->findData(member));
        }
        if (c.kind == ConvOpControl::Radios || c.kind == ConvOpControl::Geometry) {
            auto *first = m_window->findChild<QRadioButton *>(controlName(key, 0));
            auto *second = m_window->findChild<QRadioButton *>(controlName(key, 1));
            const bool isFirst = c.kind == ConvOpControl::Geometry ? member == 0 : member == c.values[0];
            (isFirst ? first : second)->setChecked(true);
            first->setEnabled(enabled);
            second->setEnabled(enabled);
            if (c.kind == ConvOpControl::Geometry) {
                auto *sketches = m_window->findChild<QCheckBox *>(QString::fromLatin1(key.key) + QStringLiteral("_sketches"));
                // Solid geometry greys the box but keeps its tick for a
                // return to curves.
                if (member != 0)
                    sketches->setChecked(member == 2);
                sketches->setEnabled(member != 0);
            }
        } else if (QWidget *control = m_window->findChild<QWidget *>(controlName(key, -1))) {
            control->setEnabled(enabled);
        }
    }
    m_showing = false;
}

HRESULT storeAllFormatOptions(IDoxVariables &holder)
{
    for (const std::int32_t format : convOpStoreOrder()) {
        CConvOpDlg page(*convOpPageFor(format), holder);
        if (const HRESULT hr = page.LoadVariables(false); failed(hr))
            return hr;
        if (const HRESULT hr = page.OnOK(); failed(hr))
            return hr;
    }
    return S_OK;
}
