#include "core/Observable.h"
#include "support/Test.h"

#include <QDirIterator>

namespace parcelory::test {
namespace {

struct Plate : Observable {
    Observed<int> ounces{this, 3};
};

struct Scale : Observable {
    explicit Scale(const Plate &plate) { buildOn(plate); }
    Observed<QString> name{this};
};

TEST(Observable, AnnouncesItsFieldsAndTheModelsThatItIsBuiltOn)
{
    Plate plate;
    auto scale = std::make_unique<Scale>(plate);
    int changes = 0;
    QObject::connect(scale.get(), &Observable::changed, &plate, [&changes] { ++changes; });
    scale->name = u"Dock"_s;
    EXPECT_EQ(changes, 1);
    scale->name = u"Dock"_s;
    EXPECT_EQ(changes, 1) << "an equal value is no change";
    plate.ounces = plate.ounces + 1;
    EXPECT_EQ(changes, 2);
    scale.reset();
    plate.ounces = 9;
    EXPECT_EQ(changes, 2);
}

TEST(Observable, EveryFieldOfAModelIsObserved)
{
    static const QRegularExpression plain(u"^ +QProperty<[^;()&]*;"_s, QRegularExpression::MultilineOption);
    int headers = 0;
    QDirIterator files(QStringLiteral(PARCELORY_SOURCE_DIR "/src"), {u"*.h"_s}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString header = files.next();
        EXPECT_FALSE(plain.match(QString::fromUtf8(contentsOf(header))).hasMatch()) << header.toStdString();
        ++headers;
    }
    EXPECT_GT(headers, 100);
}

} // namespace
} // namespace parcelory::test
