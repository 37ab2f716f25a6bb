#include "Compare.h"
#include "addressbook/AddressCsv.h"
#include "addressbook/AddressFilter.h"
#include "addressbook/LocalAddressStore.h"
#include "addressbook/VCard.h"
#include "core/Text.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace parcelory::bench {
using namespace Qt::StringLiterals;

namespace {

constexpr int contactCount = 100000;

/// Contacts with varied names and places.
const QList<PostalContact> &people()
{
    static const QList<PostalContact> all = [] {
        const QStringList given = {u"Eleanor"_s, u"Theodore"_s, u"María"_s, u"Wu"_s, u"Christopher"_s, u"Zoë"_s};
        const QStringList family = {u"Whitfield"_s, u"O'Neill"_s, u"Brandt"_s, u"van der Berg"_s, u"Kowalski"_s};
        const QStringList streets = {u"Montford Ave"_s, u"Prospect St"_s, u"King St W"_s, u"Old Mill Rd"_s};
        const QStringList cities = {u"Asheville"_s, u"Springfield"_s, u"New York"_s, u"Portland"_s, u"Salem"_s};
        QList<PostalContact> contacts;
        for (int i = 0; i < contactCount; ++i) {
            contacts.append({.name = given[i % 6] + u' ' + family[i % 5] + u' ' + QString::number(i),
                             .company = i % 4 ? QString() : u"Cascade Trading LLC"_s,
                             .street1 = QString::number(i % 9973) + u' ' + streets[i % 4],
                             .street2 = i % 3 ? QString() : u"Suite 12"_s,
                             .city = cities[i % 5],
                             .state = u"OR"_s,
                             .zip = QString::number(10000 + i * 7 % 89999),
                             .country = u"US"_s,
                             .label = u"endicia"_s,
                             .phone = u"503-555-0142"_s,
                             .email = QString::number(i) + u"@example.com"_s});
        }
        return contacts;
    }();
    return all;
}

/// The plain way: checks every contact in turn.
QList<int> plainlyFiltered(const QList<PostalContact> &contacts, const QString &query)
{
    QList<int> rows;
    for (int row = 0; row < contacts.size(); ++row) {
        const PostalContact &contact = contacts[row];
        if (contact.name.contains(query, Qt::CaseInsensitive) || contact.company.contains(query, Qt::CaseInsensitive) ||
            contact.addressSummary().contains(query, Qt::CaseInsensitive))
            rows.append(row);
    }
    return rows;
}

void filter100000Contacts(benchmark::State &state, const char *query)
{
    static const AddressFilter filter(people());
    const QString text = QString::fromUtf8(query);
    if (filter.filtered(text) != plainlyFiltered(people(), text))
        qFatal("the filter finds others");
    compare(
        state, [&] { benchmark::DoNotOptimize(filter.filtered(text)); },
        [&] { benchmark::DoNotOptimize(plainlyFiltered(people(), text)); });
}

/// Compares preparing the filter with reading the whole book; both happen after every change.
void prepareTheFilter(benchmark::State &state)
{
    const QTemporaryDir folder;
    LocalAddressStore store{QDir(folder.path())};
    store.merge(people());
    compare(
        state, [] { benchmark::DoNotOptimize(AddressFilter(people())); },
        [&] { benchmark::DoNotOptimize(store.rows()); });
}

void merge100000Contacts(benchmark::State &state)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"people.tsv"_s);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("no space for the benchmark");
    for (const PostalContact &c : people()) {
        file.write(QStringList{c.id.toString(QUuid::WithoutBraces), c.name, c.company, c.street1, c.street2, c.city,
                               c.state, c.zip, c.country, c.label, c.phone, c.email}
                       .join(u'\t')
                       .toUtf8() +
                   '\n');
    }
    file.close();
    int round = 0;
    const auto nextFolder = [&] { return QDir(folder.filePath(QString::number(++round))); };
    compare(
        state,
        [&] {
            if (LocalAddressStore(nextFolder()).merge(people()).imported != contactCount)
                qFatal("contacts are missing");
        },
        [&] {
            const QDir book = nextFolder();
            LocalAddressStore{book}; // the same table and index
            QProcess tool;
            tool.start(u"sqlite3"_s,
                       {book.filePath(u"addresses.sqlite"_s), u".mode tabs"_s, u".import %1 addresses"_s.arg(path)});
            if (!tool.waitForFinished(-1) || tool.exitCode() != 0)
                qFatal("sqlite3: %s", tool.readAllStandardError().constData());
        });
}

/// The plain way stores every contact in a separate transaction, so 200 contacts are enough.
void merge200ContactsAgainstSingleOnes(benchmark::State &state)
{
    const QTemporaryDir folder;
    int round = 0;
    const QList<PostalContact> some = people().first(200);
    const auto nextFolder = [&] { return QDir(folder.filePath(QString::number(++round))); };
    compare(
        state, [&] { benchmark::DoNotOptimize(LocalAddressStore(nextFolder()).merge(some)); },
        [&] {
            LocalAddressStore store(nextFolder());
            for (const PostalContact &contact : some)
                benchmark::DoNotOptimize(store.upsert(contact));
        });
}

void read5000Cards(benchmark::State &state)
{
    const QByteArray picture = "PHOTO;ENCODING=b;TYPE=JPEG:" + (QByteArray(74, 'A') + "\r\n ").repeated(60) + "\r\n";
    const QByteArray cards = ("BEGIN:VCARD\r\nVERSION:3.0\r\nN:Whitfield;Eleanor;;;\r\nFN:Eleanor Whitfield\r\n"
                              "item1.ADR;type=HOME:;;418 Montford Ave\\nApt 3B;Asheville;NC;28801;United States\r\n"
                              "item1.X-ABADR:us\r\n" +
                              picture + "END:VCARD\r\n")
                                 .repeated(5000);
    compare(
        state,
        [&] {
            ImportProgress progress;
            benchmark::DoNotOptimize(VCard::read(cards, progress));
        },
        [&] { benchmark::DoNotOptimize(cards.split('\n')); });
}

/// Lines that end with a carriage return only, against the same lines with line feeds: six megabytes.
void readCardsWithCarriageReturns(benchmark::State &state)
{
    const QByteArray cards = QByteArray("BEGIN:VCARD\nVERSION:3.0\nN:Whitfield;Eleanor;;;\nFN:Eleanor Whitfield\n"
                                        "ADR;type=HOME:;;418 Montford Ave\\nApt 3B;Asheville;NC;28801;United States\n"
                                        "END:VCARD\n")
                                 .repeated(40000);
    const QByteArray returns = QByteArray(cards).replace('\n', '\r');
    const auto read = [](const QByteArray &file) {
        ImportProgress progress;
        benchmark::DoNotOptimize(VCard::read(file, progress));
    };
    compare(state, [&] { read(returns); }, [&] { read(cards); });
}

/// Both exports of the whole book, against reading it.
void export100000Contacts(benchmark::State &state)
{
    const QTemporaryDir folder;
    LocalAddressStore store{QDir(folder.path())};
    store.merge(people());
    compare(
        state,
        [] {
            for (const PostalContact &contact : people()) {
                benchmark::DoNotOptimize(VCard::card(contact));
                benchmark::DoNotOptimize(AddressCsv::row(contact));
            }
        },
        [&] { benchmark::DoNotOptimize(store.rows()); });
}

BENCHMARK_CAPTURE(filter100000Contacts, oneLetter, "e")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(100);
BENCHMARK_CAPTURE(filter100000Contacts, oneDigit, "7")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(100);
BENCHMARK_CAPTURE(filter100000Contacts, aName, "whit")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(100);
BENCHMARK_CAPTURE(filter100000Contacts, aPlace, "ave, Salem")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(100);
BENCHMARK_CAPTURE(filter100000Contacts, oneRow, "77777")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(100);
BENCHMARK_CAPTURE(filter100000Contacts, nobody, "zoë x")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(100);
BENCHMARK(prepareTheFilter)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(merge100000Contacts)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(merge200ContactsAgainstSingleOnes)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(read5000Cards)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(readCardsWithCarriageReturns)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(export100000Contacts)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
} // namespace parcelory::bench
