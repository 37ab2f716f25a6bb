#include "support/FakePlatform.h"
#include "carrier/ShippoKeys.h"
#include "core/Deployment.h"
#include "core/Progress.h"
#include "core/ports/ProcessRunner.h"

#include <QFile>

#include <mutex>

namespace parcelory::test {
using namespace Qt::StringLiterals;

ProcessOutcome FakeProcesses::run(const QString &program, const QStringList &arguments, const CancelToken &cancel,
                                  std::chrono::milliseconds limit)
{
    Call call{program, arguments, {}, limit};
    if (QFile file(arguments.value(arguments.size() - 1)); file.open(QIODevice::ReadOnly))
        call.file = file.readAll();
    {
        const std::lock_guard lock(m_access);
        m_calls.append(call);
    }
    if (real)
        return real->run(program, arguments, cancel, limit);
    return behave ? behave(program, arguments) : ProcessOutcome{};
}

QByteArray FakeProcesses::lastPrinted() const
{
    QByteArray bytes;
    for (const Call &call : calls()) {
        if (call.program.endsWith(u"/lpr"_s))
            bytes = call.file;
    }
    return bytes;
}

FakePlatform::FakePlatform() : platform(with({}, Deployment::builtIn())) {}

Platform FakePlatform::with(const Own &own, const Deployment &deployment)
{
    return {.http = own.http ? *own.http : http,
            .clock = clock,
            .secrets = own.secrets ? *own.secrets : secrets,
            .preferences = preferences,
            .prompts = own.prompts ? *own.prompts : prompts,
            .desktop = desktop,
            .processes = processes,
            .hid = hid,
            .keyboard = own.keyboard ? *own.keyboard : keyboard,
            .web = own.web ? *own.web : web,
            .application = application,
            .dataFolder = QDir(folder.path()),
            .deployment = deployment};
}

void FakePlatform::useToken(const QString &token)
{
    ShippoKeys keys(secrets, preferences);
    keys.set(token, u"Practice"_s);
    keys.makeActive(u"Practice"_s);
}

} // namespace parcelory::test
