#include "addressbook/ContactsAddressProvider.h"

#include "addressbook/BlockingWork.h"
#include "addressbook/ImportProgress.h"
#include "addressbook/PostalContacts.h"
#include "core/AppError.h"
#include "core/Json.h"
#include "core/PostalContact.h"
#include "core/Progress.h"
#include "core/Task.h"
#include "core/ports/Clock.h"
#include "core/ports/ContactsSource.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <memory>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

using Read = std::function<void(const ContactsSource::Take &)>;

/// An exception must not pass through the source's code, so the reading is stopped first and the exception is rethrown
/// afterward.
QList<PostalContact> collect(const Read &read, ImportProgress &progress)
{
    QList<PostalContact> contacts;
    std::exception_ptr failure;
    read([&](const PlatformContact &person) {
        try {
            contacts += postalContacts(person);
            progress.reached(contacts.size());
        } catch (...) {
            failure = std::current_exception();
        }
        return !failure;
    });
    if (failure)
        std::rethrow_exception(failure);
    return contacts;
}

/// Reads through the older interface, which works on machines where the newer interface hangs but may return nothing.
QList<PostalContact> readLegacy(ContactsSource &source, ImportProgress &progress)
{
    try {
        return collect([&source](const auto &take) { source.readLegacy(take); }, progress);
    } catch (const ImportCanceled &) {
        throw;
    } catch (const AppError &) {
        return {}; // the newer interface reports the reason
    }
}

QList<PostalContact> readAll(ContactsSource &source, ImportProgress &progress)
{
    QList<PostalContact> contacts = readLegacy(source, progress);
    if (contacts.isEmpty())
        contacts = collect([&source](const auto &take) { source.read({}, take); }, progress);
    std::ranges::sort(contacts, [](const PostalContact &one, const PostalContact &other) {
        const int names = one.name.compare(other.name, Qt::CaseInsensitive);
        return names ? names < 0 : one.addressSummary() < other.addressSummary();
    });
    return contacts;
}

/// Runs a step of the diagnostics and returns the text after the step's name. Throws if the step fails.
using Probe = std::function<QString(ContactsSource &)>;

void requireAccess(ContactsSource &source)
{
    const int status = source.authorizationStatus();
    if (status != ContactsSource::fullAccess && status != ContactsSource::limitedAccess)
        throw AppError(u"no access"_s);
}

QString legacyOpened(ContactsSource &source)
{
    requireAccess(source);
    if (!source.openLegacy())
        throw AppError(u"cannot be opened"_s);
    return {};
}

Probe peopleCount(const QString &unit, const std::function<void(ContactsSource &, const ContactsSource::Take &)> &read)
{
    return [unit, read](ContactsSource &source) {
        requireAccess(source);
        int people = 0;
        read(source, [&people](const PlatformContact &) {
            ++people;
            return true;
        });
        return u": "_s + QString::number(people) + unit;
    };
}

Probe firstThousand(bool isUnified)
{
    return peopleCount(u" contacts"_s, [isUnified](ContactsSource &source, const ContactsSource::Take &take) {
        source.read({.most = 1000, .isUnified = isUnified}, take);
    });
}

QString authorization(ContactsSource &source)
{
    return u": "_s + QString::number(source.authorizationStatus()) + u" (3 = full access)"_s;
}

QString containers(ContactsSource &source)
{
    requireAccess(source);
    return u": "_s + QString::number(source.containerCount()) + u" containers"_s;
}

QList<std::pair<QString, Probe>> diagnosticSteps()
{
    return {{u"Auth status"_s, authorization},
            {u"Legacy AB open"_s, legacyOpened},
            {u"Legacy AB people()"_s, peopleCount(u" people"_s, std::mem_fn(&ContactsSource::readLegacy))},
            {u"CN containers"_s, containers},
            {u"CN raw fetch, first 1000, no unify"_s, firstThousand(false)},
            {u"CN unified fetch, first 1000"_s, firstThousand(true)}};
}

/// Runs one step and makes its line.
Task<QString> lineOf(std::pair<QString, Probe> step, std::shared_ptr<ContactsSource> source, Clock &clock)
{
    const auto &[name, probe] = step;
    try {
        const QString result = co_await blockingWork(clock, ContactsAddressProvider::stepTimeout, {},
                                                     [probe, source] { return probe(*source); });
        co_return u"PASS "_s + name + result;
    } catch (const AddressLoadTimeout &) {
        co_return u"TIMED OUT "_s + name;
    } catch (const std::exception &error) {
        co_return u"FAIL "_s + name + u": "_s + describe(error);
    }
}

} // namespace

ContactsAddressProvider::ContactsAddressProvider(std::shared_ptr<ContactsSource> source, Clock &clock,
                                                 const QDir &folder)
    : m_source(std::move(source)), m_clock(clock), m_cache(folder.filePath(u"contacts_cache.json"_s))
{
}

Task<bool> ContactsAddressProvider::requestAccess(CancelToken cancel)
{
    if (!m_source)
        co_return false;
    const bool granted =
        co_await blockingWork(m_clock, timeout, cancel, [source = m_source] { return source->requestAccess(); });
    co_return granted;
}

Task<QList<PostalContact>> ContactsAddressProvider::all(Progress progress)
{
    if (!m_source)
        co_return {};
    struct Outcome {
        QList<PostalContact> contacts;
        QByteArray json;
    };
    const auto read = [source = m_source, progress] {
        ImportProgress reading(progress);
        Outcome outcome{.contacts = readAll(*source, reading)};
        outcome.json = encodeJson(outcome.contacts, Keys::asIs);
        return outcome;
    };
    const Outcome outcome = co_await blockingWork(m_clock, timeout, progress.cancelToken(), read);
    m_cache.write(outcome.json);
    co_return outcome.contacts;
}

Task<QString> ContactsAddressProvider::diagnostics()
{
    QStringList lines;
    if (m_source) {
        for (const auto &step : diagnosticSteps()) {
            const QString line = co_await lineOf(step, m_source, m_clock);
            lines.append(line);
        }
    }
    co_return lines.join(u'\n');
}

} // namespace parcelory
