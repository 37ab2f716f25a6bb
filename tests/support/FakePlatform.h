#pragma once

#include "core/Deployment.h"
#include "core/Platform.h" // IWYU pragma: export
#include "platform/NetworkTransport.h"
#include "practice/MemorySecrets.h"
#include "support/FakeWebSession.h" // IWYU pragma: export
#include "support/RunTask.h"        // IWYU pragma: export
#include "support/Table.h"          // IWYU pragma: export

#include <QHash>
#include <QScopeGuard>

namespace parcelory::test {

class MemoryPreferences : public Preferences {
public:
    QVariant value(const QString &key) const override
    {
        const std::lock_guard lock(m_access);
        return values.value(key);
    }
    void setValue(const QString &key, const QVariant &value) override
    {
        const std::lock_guard lock(m_access);
        values[key] = value;
    }
    bool synchronize() override { return isWritable; }
    QHash<QString, QVariant> values;
    std::atomic<bool> isWritable = true;

private:
    mutable std::mutex m_access;
};

/// Records alerts and questions, and answers as the test says.
class FakePrompts : public Prompts {
public:
    Task<> alert(QString title, QString text) override
    {
        alerts.append({title, text});
        if (whileAlerted)
            whileAlerted();
        co_return;
    }
    Task<int> choose(Question question) override
    {
        questions.append(question);
        if (whileAsked)
            whileAsked();
        co_return answer.value_or(question.safeChoice);
    }
    Task<QString> saveFile(QString title, QString proposed) override
    {
        fileQuestions.append({title, proposed});
        co_return QString(file);
    }
    Task<QString> openFile(QString title, QString) override
    {
        fileQuestions.append({title, {}});
        co_return QString(file);
    }
    Task<QString> openFolder(QString title) override { return openFile(title, {}); }
    QString file; ///< the clerk's choice; empty if canceled
    QList<std::pair<QString, QString>> fileQuestions;
    QList<std::pair<QString, QString>> alerts;
    QList<Question> questions;
    std::optional<int> answer;
    std::function<void()> whileAsked, whileAlerted;
};

class FakeDesktop : public Desktop {
public:
    void openFile(const QString &path) override
    {
        if (fails)
            throw AppError(QStringLiteral("no viewer"));
        opened.append(path);
    }
    void copyText(const QString &text) override { clipboard = text; }
    void openUrl(const QUrl &url) override
    {
        if (fails)
            throw AppError(QStringLiteral("no browser"));
        opened.append(url.toString());
    }
    QString clipboard;
    QStringList opened;
    bool fails = false;
};

/// Child processes simulated by a function of the test; records the calls. Thread-safe.
class FakeProcesses : public ProcessRunner {
public:
    struct Call {
        QString program;
        QStringList arguments;
        QByteArray file; ///< contents of the file that the last argument names
        std::chrono::milliseconds limit;
    };
    ProcessOutcome run(const QString &program, const QStringList &arguments, const CancelToken &cancel = {},
                       std::chrono::milliseconds limit = noLimit) override;

    QList<Call> calls() const
    {
        const std::lock_guard lock(m_access);
        return m_calls;
    }
    /// The bytes that were last passed to lpr.
    QByteArray lastPrinted() const;
    std::function<ProcessOutcome(const QString &program, const QStringList &arguments)> behave;
    ProcessRunner *real = nullptr; ///< if set, runs the processes for real

private:
    mutable std::mutex m_access;
    QList<Call> m_calls;
};

/// Scales that are plugged in and send reports when the test says so.
class FakeHid : public HidSource {
public:
    void start(Listener taken) override { listener = std::move(taken); }
    void stop() override { listener = {}; }
    Listener listener;
};

/// An installed program that records requests to start a process or to quit.
class FakeApplication : public Application {
public:
    QString version() const override { return installedVersion; }
    QString installedPath() const override { return installed; }
    qint64 processId() const override { return pid; }
    void startDetached(const QString &program, const QStringList &arguments) override
    {
        if (fails)
            throw AppError(QStringLiteral("no shell"));
        started.append(QStringList(program) + arguments);
    }
    void quitWithin(std::chrono::milliseconds patience) override { ends.append(patience); }
    QString installedVersion = QStringLiteral("1.9");
    QString installed;
    qint64 pid = 4711;
    bool fails = false;
    QList<QStringList> started;
    QList<std::chrono::milliseconds> ends;
};

/// Real HTTP on loopback that counts the open requests, and remembers how long the last one was allowed to take.
class FakeTransport : public NetworkTransport {
public:
    explicit FakeTransport(Clock &clock) : NetworkTransport(Reach::loopbackOnly, clock) {}
    Task<HttpAnswer> send(HttpRequest request) override
    {
        lastLimit = request.timeout;
        ++underWay;
        const auto ended = qScopeGuard([this] { --underWay; });
        co_return co_await NetworkTransport::send(std::move(request));
    }
    int underWay = 0; ///< requests without an answer
    std::chrono::milliseconds lastLimit{};
};

/// A platform for tests: real loopback HTTP, everything else in memory, a temporary data folder.
struct FakePlatform {
    FakePlatform();

    QTemporaryDir folder;
    FakeClock networkClock; ///< apart, so that a test that runs the timers of `clock` ends no request
    FakeTransport http{networkClock};
    FakeClock clock;
    MemorySecrets secrets;
    MemoryPreferences preferences;
    FakePrompts prompts;
    FakeDesktop desktop;
    FakeProcesses processes;
    FakeHid hid;
    SilentKeyboard keyboard;
    FakeWebSession web;
    FakeApplication application;
    Platform platform;

    QString path(const QString &name) const { return folder.filePath(name); }
    void run(Task<> task)
    {
        runTask(std::move(task), &clock);
        settle();
    }
    /// The same platform with some of the test's own ports.
    struct Own {
        Prompts *prompts = nullptr;
        Keyboard *keyboard = nullptr;
        WebSession *web = nullptr;
        HttpTransport *http = nullptr;
        SecretStore *secrets = nullptr;
    };
    Platform with(const Own &own) { return with(own, platform.deployment); }
    Platform with(const Own &own, const Deployment &deployment);
    /// Stores a key and makes it active.
    void useToken(const QString &token);
};

} // namespace parcelory::test
