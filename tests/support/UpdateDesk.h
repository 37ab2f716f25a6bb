#pragma once

#include "app/AppState.h"
#include "app/update/UpdateChecker.h"
#include "core/AppBundle.h"
#include "platform/SystemProcesses.h"
#include "shell/ErrorLog.h"
#include "shell/UpdateFeed.h"
#include "support/FakePlatform.h"

#undef signals
#include "practice/LoopbackServer.h"

namespace parcelory::test {

/// An installed version 1.9, a web server for the files in the folder "site", and a private folder for temporary files.
class UpdateDesk : public testing::Test {
protected:
    UpdateDesk()
    {
        sh(u"mkdir tmp site Applications"_s);
        write(u"open"_s, "#!/bin/sh\nexec \"$1/" + programInBundle.toUtf8() + "\"\n"); // instead of the one of macOS
        qputenv("TMPDIR", desk.path(u"tmp"_s).toUtf8());
        desk.processes.real = &processes;
        desk.application.installed = desk.path(u"Applications/Parcelory.app"_s);
        desk.platform.deployment.updateFeed = url("app/parcelory-latest.json");
        server.start([this](const httplib::Request &request, httplib::Response &answer) { serve(request, answer); });
    }
    ~UpdateDesk() override
    {
        usualTemp.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", usualTemp);
        hold = false;
    }
    void serve(const httplib::Request &request, httplib::Response &answer)
    {
        if (request.path.starts_with("/moved")) {
            answer.set_redirect(request.path.substr(6));
            return;
        }
        const std::string name = request.path.substr(request.path.rfind('/') + 1);
        const QByteArray bytes = read(u"site/"_s + QString::fromStdString(name));
        const size_t size = size_t(bytes.size());
        answer.status = size == 0 ? 404 : 200;
        answer.set_content_provider(size, "text/plain", [=, this](size_t offset, size_t, httplib::DataSink &sink) {
            const bool isRest = offset > 0 && name.ends_with(".zip");
            while (isRest && hold && server.pause(std::chrono::milliseconds(5))) {
            }
            return !(isRest && cut) && sink.write(bytes.constData() + offset, std::min(size - offset, (size + 1) / 2));
        });
    }
    QString url(const char *path) const { return QString::fromStdString(server.base()) + QLatin1StringView(path); }

    QByteArray read(const QString &name) const
    {
        QFile file(desk.path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QStringList entries(const QString &folder) const
    {
        return QDir(desk.path(folder)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    /// Runs a script in the fixture's folder.
    int sh(const QString &script) const
    {
        return SystemProcesses().run(u"/bin/sh"_s, {u"-ec"_s, u"cd '%1'; "_s.arg(desk.folder.path()) + script}).status;
    }
    void write(const QString &name, const QByteArray &text) const
    {
        put(desk.path(name), text);
        QFile::setPermissions(desk.path(name), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QByteArray program(int version) const
    {
        return "#!/bin/sh\necho v" + QByteArray::number(version) + " >'" + desk.path(u"started'\n"_s).toUtf8();
    }
    /// Makes an application, large enough to observe a partial download.
    void make(const QString &app, int version) const
    {
        sh(u"rm -rf %1; mkdir -p %2; head -c 100000 /dev/urandom >%1/picture"_s.arg(app, folderOf(programIn(app))));
        write(programIn(app), program(version));
    }
    static QString programIn(const QString &app) { return app + u'/' + programInBundle; }
    static QString folderOf(const QString &file) { return QFileInfo(file).path(); }
    QByteArray installedProgram() const { return read(programIn(u"Applications/Parcelory.app"_s)); }
    /// Publishes version 2 and returns its feed.
    UpdateInfo publish(const QString &key = {}) const
    {
        make(u"new.app"_s, 2);
        EXPECT_EQ(
            sh(u"printf 'Faster \"scale\".\\r\\nFewer\\tclicks.\\n' | "_s +
               QStringLiteral(PARCELORY_SOURCE_DIR "/tools/make-update new.app 2 '%1' site %2").arg(url(""), key)),
            0);
        return parseUpdateFeed(read(u"site/parcelory-latest.json"_s)).value();
    }
    void run(Task<> task) { runTask(std::move(task), &desk.clock); }
    std::string install(const UpdateInfo &info)
    {
        checker.available = info;
        run(checker.install());
        return checker.status.value().toStdString();
    }
    UpdateInfo offerOf(const QString &address) const { return {u"2"_s, address, {}, {}, {}, {}}; }

    const QByteArray usualTemp = qgetenv("TMPDIR");
    SystemProcesses processes;
    FakePlatform desk;
    ErrorLog errors{desk.platform};
    AppState app{desk.platform};
    UpdateChecker checker{app};
    std::atomic<bool> hold = false, cut = false; ///< delays or cuts off the second half of every archive
    LoopbackServer server{"media server"};
};

} // namespace parcelory::test
