#pragma once

#include "common/translator.h"
#include "host/hresult.h"

#include <QPointer>
#include <QWidget>
#include <QString>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

class IDoxVariables;


// One entry of an option combo: its text (string number 0: not translated)
// and the preference code it stands for.
struct ConvOpChoice {
    std::int32_t textId;
    const char *english;
    std::int32_t value;
};

// How a key is shown on its page.
struct ConvOpControl {
    enum Kind {
        Check,    // one box: the boolean
        Combo,    // a list of choices: the integer
        Radios,   // two radios: values[0] / values[1]
        Geometry, // two radios and box 245: 0 solid, 1 curves, 2 curves with sketches
    };
    Kind kind = Check;
    int ids[2] = {0, 0};
    const char *texts[2] = {nullptr, nullptr};
    std::int32_t values[2] = {0, 0};
    const std::vector<ConvOpChoice> *choices = nullptr;
    // An explanatory text shown under the control, or none.
    const char *note = nullptr;
};

// One task variable of an option page.
struct ConvOpKey {
    const char *key;
    bool boolean;
    std::int32_t newValue;
    std::int32_t resetValue;
    ConvOpControl control;
    // The control is enabled only while these keys hold these values.
    std::vector<std::pair<const char *, std::int32_t>> enabledWhen = {};
};

// One option page: its keys in the order they are shown.
struct ConvOpPageInfo {
    const char *name;      // localisation name
    const char *helpTopic;
    std::int32_t templateId;
    std::vector<std::int32_t> formats;
    std::vector<ConvOpKey> keys;
};

// The page of a format index; null for a format without options.
const ConvOpPageInfo *convOpPageFor(std::int32_t formatIndex);
// The format indexes in the order the conversion settings store their options.
const std::vector<std::int32_t> &convOpStoreOrder();
// True for the formats that have an option page.
bool hasConvOpPage(std::int32_t formatIndex);
// True for a key of any option page (any letter case, as the vault's names).
bool isConvOpKey(const QString &key);

// An option page: members by key, read from and written to the task
// variables. The window is built on demand from the page's key table.
class CConvOpDlg final
{
public:
    CConvOpDlg(const ConvOpPageInfo &info, IDoxVariables &holder, TextLookup text = {});
    ~CConvOpDlg();

    const ConvOpPageInfo &info() const { return m_info; }

    // Reset defaults first when reset; otherwise stored keys replace the
    // members. A host error or a value of the wrong kind ends the load.
    HRESULT LoadVariables(bool reset);
    // Writes every key: integers as 32-bit integers, booleans as booleans.
    HRESULT OnOK();

    std::int32_t value(const QString &key) const;
    void setValue(const QString &key, std::int32_t value);

    QWidget *CreatePage(QWidget *parent);
    QWidget *window() const { return m_window; }
    void UpdateControlStates();

private:
    QString text(std::int32_t number, const char *english) const;
    void buildControl(const ConvOpKey &key, QWidget *page, class QFormLayout *form);
    void showValues();

    const ConvOpPageInfo &m_info;
    IDoxVariables &m_holder;
    TextLookup m_text;
    std::map<QString, std::int32_t> m_values;
    QPointer<QWidget> m_window;
    bool m_showing = false;
};

// Stores the options of every format that has a page, loaded from the
// variables (defaults for the keys never set), silently.
HRESULT storeAllFormatOptions(IDoxVariables &holder);
