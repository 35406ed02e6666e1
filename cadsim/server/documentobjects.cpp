#include "cadsim/server/documentobjects.h"

#include "cadsim/model/cadapplication.h"
#include "cadsim/model/modeldoc.h"
#include "cadsim/server/memberhelpers.h"

#include <algorithm>

DocumentObject::DocumentObject(DocumentObjects &registry, std::shared_ptr<ModelDoc> doc)
    : m_registry(registry), m_doc(std::move(doc))
{
}

HRESULT DocumentObject::invoke(const QString &name, AutomationCall &call)
{
    ModelDoc &doc = *m_doc;
    if (member::is(name, "GetType")) {
        call.setResult(Variant::fromI4(static_cast<std::int32_t>(doc.type())));
    } else if (member::is(name, "GetPathName")) {
        call.setResult(Variant::fromBStr(doc.pathName()));
    } else if (member::is(name, "Printer")) {
        call.setResult(Variant::fromBStr(doc.printer()));
    } else if (member::is(name, "GetTitle")) {
        call.setResult(Variant::fromBStr(doc.title()));
    } else if (member::is(name, "GetActiveConfigurationName")) {
        call.setResult(Variant::fromBStr(doc.activeConfiguration()));
    } else if (member::is(name, "GetCurrentSheetName")) {
        call.setResult(Variant::fromBStr(doc.currentSheet()));
    } else if (member::is(name, "GetNext")) {
        // The document after this one in the application's list.
        const auto &documents = m_registry.application().documents();
        auto self = std::find(documents.begin(), documents.end(), m_doc);
        AutomationValue next = AutomationValue::nothing();
        if (self != documents.end() && ++self != documents.end())
            next = AutomationValue::fromObject(m_registry.forDocument(**self));
        call.setResult(next);
    } else if (member::is(name, "GetFirstModelView")) {
        call.setResult(doc.views().empty() || doc.isClosed()
                           ? AutomationValue::nothing()
                           : AutomationValue::fromObject(m_registry.forViewIndex(doc, 0)));
    } else if (member::is(name, "IsClosed")) {
        call.setResult(Variant::fromBool(doc.isClosed()));
    } else {
        return DISP_E_MEMBERNOTFOUND;
    }
    return S_OK;
}

ViewObject::ViewObject(DocumentObjects &registry, std::shared_ptr<ModelDoc> doc, std::size_t index)
    : m_registry(registry), m_doc(std::move(doc)), m_index(index)
{
}

HRESULT ViewObject::invoke(const QString &name, AutomationCall &call)
{
    if (member::is(name, "GetNext")) {
        call.setResult(m_index + 1 < m_doc->views().size() && !m_doc->isClosed()
                           ? AutomationValue::fromObject(m_registry.forViewIndex(*m_doc, m_index + 1))
                           : AutomationValue::nothing());
    } else if (member::is(name, "GetDocument")) {
        auto doc = m_registry.forDocument(*m_doc);
        call.setResult(doc ? AutomationValue::fromObject(doc) : AutomationValue::nothing());
    } else {
        return DISP_E_MEMBERNOTFOUND;
    }
    return S_OK;
}

std::shared_ptr<DocumentObject> DocumentObjects::forDocument(ModelDoc &doc)
{
    std::lock_guard lock(m_mutex);
    if (auto found = m_documents.find(&doc); found != m_documents.end())
        return found->second;
    const auto &documents = m_app.documents();
    auto held = std::find_if(documents.begin(), documents.end(),
                             [&doc](const std::shared_ptr<ModelDoc> &d) { return d.get() == &doc; });
    if (held == documents.end())
        return nullptr;
    auto object = std::make_shared<DocumentObject>(*this, *held);
    m_documents[&doc] = object;
    return object;
}

std::shared_ptr<ViewObject> DocumentObjects::forView(ModelDoc &doc, const ModelView &view)
{
    const auto &views = doc.views();
    for (std::size_t i = 0; i < views.size(); ++i) {
        if (views[i].get() == &view)
            return forViewIndex(doc, i);
    }
    return nullptr;
}

std::shared_ptr<ViewObject> DocumentObjects::forViewIndex(ModelDoc &doc, std::size_t index)
{
    std::lock_guard lock(m_mutex);
    const auto owner = forDocument(doc);
    if (!owner)
        return nullptr;
    auto &slot = m_views[{&doc, index}];
    if (!slot)
        slot = std::make_shared<ViewObject>(*this, owner->document(), index);
    return slot;
}
