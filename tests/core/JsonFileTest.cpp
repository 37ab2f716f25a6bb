#include "core/JsonFile.h"
#include "support/Test.h"

namespace parcelory::test {

TEST(JsonFile, WritesInOrderIntoAFolderThatItCreates)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"new/deep/list.json"_s);
    {
        JsonFile file(path);
        EXPECT_EQ(file.read(), std::nullopt);
        for (int change = 0; change <= 200; ++change)
            file.write(QByteArray::number(change));
        file.flush();
        EXPECT_EQ(contentsOf(path), "200");
        file.write("last");
    }
    EXPECT_EQ(contentsOf(path), "last"); // the destructor waits for pending writes
    EXPECT_EQ(QDir(folder.filePath(u"new/deep"_s)).entryList(QDir::Files), QStringList{u"list.json"_s});
}

TEST(JsonFile, MovesAwayAFolderWithTheFilesName)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(QDir(folder.path()).mkdir(u"list.json"_s));
    JsonFile file(folder.filePath(u"list.json"_s));
    EXPECT_EQ(file.read(), std::nullopt);
    file.write("[]");
    file.flush();
    EXPECT_EQ(contentsOf(folder.filePath(u"list.json"_s)), "[]");
}

TEST(JsonFile, OnlyLogsAWriteThatFails)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(QFile(folder.filePath(u"plain"_s)).open(QIODevice::WriteOnly)); // a file in the place of the folder
    JsonFile file(folder.filePath(u"plain/list.json"_s));
    testing::internal::CaptureStderr();
    file.write("[]");
    file.flush();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), StartsWith("Parcelory: cannot write "));
}

} // namespace parcelory::test
