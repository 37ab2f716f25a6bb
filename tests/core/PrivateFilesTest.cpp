#include "core/PrivateFiles.h"
#include "support/Test.h"

#include "core/JsonFile.h"
#include "core/Sqlite.h"

#include <QScopeGuard>

namespace parcelory::test {
namespace {

/// A folder for records under the most generous umask.
class PrivateFiles : public testing::Test {
protected:
    ~PrivateFiles() override { ::umask(m_usualMask); }

    QString path(const QString &name) const { return m_folder.filePath(u"Parcelory/"_s + name); }
    /// The file's type and mode, in octal.
    QByteArray mode(const QString &name) const
    {
        struct stat facts{};
        ::lstat(QFile::encodeName(path(name)).constData(), &facts);
        return QByteArray::number(qulonglong(facts.st_mode), 8);
    }
    QByteArray contents(const QString &name) const { return contentsOf(path(name)); }
    QStringList aside() const { return QDir(path({})).entryList({u"*.unreadable-*"_s}, QDir::Files | QDir::System); }

private:
    const QTemporaryDir m_folder;
    const mode_t m_usualMask = ::umask(0);
};

} // namespace

TEST_F(PrivateFiles, AreMadeSoAndMendedWhateverTheUmaskIs)
{
    {
        JsonFile file(path(u"boxes.json"_s));
        file.write("[1]");
    }
    Database log(path(u"log.sqlite"_s));
    ASSERT_TRUE(log.exec("CREATE TABLE t (a); BEGIN; INSERT INTO t VALUES (1)"));
    for (const QString &name : {u"boxes.json"_s, u"log.sqlite"_s, u"log.sqlite-journal"_s})
        EXPECT_EQ(mode(name), "100600") << name.toStdString();
    EXPECT_EQ(mode({}), "40700");

    put(path(u"old.json"_s), "[]"); // by an earlier version
    ASSERT_EQ(::chmod(QFile::encodeName(path({})).constData(), 0777), 0);
    EXPECT_EQ(mode(u"old.json"_s), "100666");
    makePrivate(QDir(path({})));
    EXPECT_EQ(mode(u"old.json"_s), "100600");
    EXPECT_EQ(mode({}), "40700");
    EXPECT_EQ(contents(u"old.json"_s), "[]");
    EXPECT_TRUE(log.exec("COMMIT"));
}

TEST_F(PrivateFiles, APipeOrAHugeFileInPlaceOfAStoreHoldsNothingUp)
{
    createPrivateFolder(QDir(path({})));
    const auto makePipe = [this](const QString &name) {
        return ::mkfifo(QFile::encodeName(path(name)).constData(), 0666);
    };
    ASSERT_EQ(makePipe(u"errors.json"_s), 0);
    put(path(u"senders.json"_s), "{}");
    ASSERT_TRUE(QFile::resize(path(u"senders.json"_s), JsonFile::largest + 1));
    for (const QString &name : {u"errors.json"_s, u"senders.json"_s}) {
        JsonFile file(path(name));
        EXPECT_EQ(file.read(), std::nullopt) << name.toStdString();
        file.write("[]");
        file.flush();
        EXPECT_EQ(contents(name), "[]");
    }
    EXPECT_EQ(aside().size(), 2) << "both are kept under another name";

    ASSERT_EQ(makePipe(u"journal.lock"_s), 0); // a store that has no such check
    makePrivate(QDir(path({})));
    EXPECT_FALSE(QFile::exists(path(u"journal.lock"_s)));
    EXPECT_EQ(aside().size(), 3);
}

} // namespace parcelory::test
