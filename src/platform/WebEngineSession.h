#pragma once

#include "core/ports/WebSession.h"

#include <QTimer>

#include <memory>

class QWebEngineProfile;

namespace parcelory {

/// A page of the web engine without a view. The engine starts with the first page that is loaded, not before: its
/// processes take a tenth of a second and a hundred megabytes. Must end before the application object does.
class WebEngineSession : public WebSession {
public:
    enum class Reach { anywhere, loopbackOnly };

    struct Settings {
        QString folder; ///< where cookies are kept over restarts
        Reach reach = Reach::anywhere;
        std::chrono::milliseconds answerLimit = std::chrono::seconds(5); ///< for one expression
    };

    explicit WebEngineSession(Settings settings);
    ~WebEngineSession() override;

    /// What the engine has to be told before the application object is made.
    static void prepareProcess();
    /// Empty when this machine can run the engine, otherwise why not. The engine itself would end the program.
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
    bool m_stuck = false;                   ///< an evaluation has got no answer
    std::shared_ptr<const int> m_listening; ///< while it lives, somebody waits for answers
    QTimer m_loadLimit;
    std::unique_ptr<QWebEngineProfile> m_profile;
    // After the profile, so that they go first.
    std::unique_ptr<Page> m_page;
    std::unique_ptr<Page> m_former; ///< emptying its stores
};

} // namespace parcelory
