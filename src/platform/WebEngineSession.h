#pragma once

#include "core/ports/WebSession.h"

#include <QTimer>

#include <memory>

class QWebEngineProfile;

namespace parcelory {

/// A web engine page without a view. The engine starts at the first page load, because its processes take a tenth of a
/// second and a hundred megabytes. Must be destroyed before the application object.
class WebEngineSession : public WebSession {
public:
    enum class Reach { anywhere, loopbackOnly };

    struct Settings {
        QString folder; ///< for web storage; cookies are kept in memory only
        Reach reach = Reach::anywhere;
        std::chrono::milliseconds answerLimit = std::chrono::seconds(5); ///< timeout of an evaluation
    };

    explicit WebEngineSession(Settings settings);
    ~WebEngineSession() override;

    /// Sets the engine's options; must run before the application object is created.
    static void prepareProcess();
    /// Why this machine cannot run the engine; empty if it can. Without this check, the engine itself would end the
    /// program.
    static QString obstacle();

    void setDelegate(Delegate delegate) override;
    void load(const QUrl &url, std::chrono::milliseconds timeout) override;
    Task<QVariant> evaluate(QString expression) override;
    bool hasCrashed() const override { return m_crashed; }
    void clear() override;

private:
    class Page;
    QWebEngineProfile &profile();
    Page &page();

    Settings m_settings;
    Delegate m_delegate;
    bool m_crashed = false;
    bool m_stuck = false;                   ///< an evaluation timed out
    std::shared_ptr<const int> m_listening; ///< replaced to drop the results of pending evaluations
    QTimer m_loadLimit;
    std::unique_ptr<QWebEngineProfile> m_profile;
    // After the profile, so that the pages are destroyed first.
    std::unique_ptr<Page> m_page;
    std::unique_ptr<Page> m_former; ///< the last page while it clears its storage
};

} // namespace parcelory
