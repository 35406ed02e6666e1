#pragma once

#include <QString>

class ModelDoc;
class ModelView;

// What the model tells the outside world (the automation server forwards
// it as events). Calls arrive on the thread that changed the model.
class ModelObserver
{
public:
    virtual ~ModelObserver() = default;
    virtual void documentOpened(ModelDoc &) {}
    virtual void documentActivated(ModelDoc &) {}
    // Before the first byte of fileName is written.
    virtual void fileSaving(ModelDoc &, const QString & /*fileName*/) {}
    // The document is closing; it is still readable during the call.
    virtual void documentDestroyed(ModelDoc &) {}
    virtual void printed(ModelDoc &, ModelView &) {}
    virtual void visibilityChanged(bool /*visible*/) {}
};
