#pragma once

#include "host/hostobject.h"
#include "host/idoxtask.h"

#include <QString>
#include <cstdint>

// Task variables as the add-in reads and writes them. Every reader returns
// S_OK when the variable was there, S_FALSE when it was absent (the default
// is stored) and a negative code when the host failed or the stored value
// cannot be changed to the wanted type (the value is left alone).

HRESULT readBoolVariable(IDoxVariables &holder, const QString &name, bool defaultValue, bool &value);
HRESULT readIntVariable(IDoxVariables &holder, const QString &name, std::int32_t defaultValue, std::int32_t &value);
HRESULT readTextVariable(IDoxVariables &holder, const QString &name, const QString &defaultValue, QString &value);
HRESULT readRealVariable(IDoxVariables &holder, const QString &name, float defaultValue, float &value);

// Booleans are stored as VT_BOOL (-1 or 0), integers as VT_I4, texts as
// VT_BSTR, reals (margins) as VT_R4.
HRESULT writeBoolVariable(IDoxVariables &holder, const QString &name, bool value);
HRESULT writeIntVariable(IDoxVariables &holder, const QString &name, std::int32_t value);
HRESULT writeTextVariable(IDoxVariables &holder, const QString &name, const QString &value);
HRESULT writeRealVariable(IDoxVariables &holder, const QString &name, float value);

// The same readers for code inside a command: failures raise HostError.
bool getBoolVariable(IDoxVariables &holder, const QString &name, bool defaultValue);
std::int32_t getIntVariable(IDoxVariables &holder, const QString &name, std::int32_t defaultValue);
QString getTextVariable(IDoxVariables &holder, const QString &name, const QString &defaultValue = {});

// Reads from a holder of either kind: task properties first, then a task
// instance. found tells whether the variable exists. A holder that is neither
// gives E_NOINTERFACE.
HRESULT readHolderVariable(const HostObjectPtr &holder, const QString &name, Variant &value, bool &found);

// Page-style load: keys are read in order; an absent key keeps the field as
// it was (the page default); the first failure stops the load and later keys
// are not read.
class VariableLoader final
{
public:
    explicit VariableLoader(IDoxVariables &holder) : m_holder(holder) {}

    VariableLoader &boolean(const QString &name, bool &field);
    VariableLoader &integer(const QString &name, std::int32_t &field);
    VariableLoader &text(const QString &name, QString &field);
    VariableLoader &real(const QString &name, float &field);

    HRESULT result() const { return failed(m_result) ? m_result : S_OK; }

private:
    IDoxVariables &m_holder;
    HRESULT m_result = S_OK;
};

// Page-style save: keys are written in order; the first failure stops the
// save, keys written before it stay written.
class VariableSaver final
{
public:
    explicit VariableSaver(IDoxVariables &holder) : m_holder(holder) {}

    VariableSaver &boolean(const QString &name, bool value);
    VariableSaver &integer(const QString &name, std::int32_t value);
    VariableSaver &text(const QString &name, const QString &value);
    VariableSaver &real(const QString &name, float value);

    HRESULT result() const { return failed(m_result) ? m_result : S_OK; }

private:
    VariableSaver &write(const QString &name, const Variant &value);

    IDoxVariables &m_holder;
    HRESULT m_result = S_OK;
};

// Names of the variables the add-in itself owns.
namespace TaskKeys {
inline const QString Type = QStringLiteral("__type");
inline const QString Script = QStringLiteral("__script");
inline const QString McVersion = QStringLiteral("__mc_version");
inline const QString SelectionList = QStringLiteral("__selection_list");
inline const QString OutputList = QStringLiteral("__output_list");
inline const QString MenuCmdDisplay = QStringLiteral("__menucmd_display");
inline const QString ReplaceOutput = QStringLiteral("ReplaceOutput");
inline const QString PrinterShowPrintDlg = QStringLiteral("__printer_showprintdlg");
} // namespace TaskKeys
