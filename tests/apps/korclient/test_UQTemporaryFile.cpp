// A file written under a temporary name: it gets its name in one step or goes, whatever path it takes out.
#include "ClientTestSupport.h"
#include "UQTemporaryFile.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using namespace clienttest;

class TemporaryFileTest : public ::testing::Test {
protected:
    TemporaryFileTest() : scratch(L"temporary"), sTarget(scratch.path() + L"\\target.txt") {}

    void write(UQTemporaryFile& _rFile, const std::string& _sContent) {
        ASSERT_EQ(UQSafeFile::mf_writeAll(_rFile.mf_get(), _sContent.data(), _sContent.size()), 0u);
    }

    ScratchFolder scratch;
    std::wstring sTarget;
};

TEST_F(TemporaryFileTest, IsWrittenBesideItsTargetUnderATemporaryName) {
    UQTemporaryFile file;
    ASSERT_EQ(file.mf_create(sTarget), 0u);
    ASSERT_TRUE(file.mf_isOpen());
    write(file, "content");
    const std::vector<std::wstring> names = filesBelow(scratch.path());
    ASSERT_EQ(names.size(), 1u);
    EXPECT_EQ(names[0].compare(0, 8, L".kortmp-"), 0) << utf8(names[0]);
    EXPECT_FALSE(exists(sTarget));
}

TEST_F(TemporaryFileTest, CommitGivesItItsNameAndTheDestructorKeepsIt) {
    {
        UQTemporaryFile file;
        ASSERT_EQ(file.mf_create(sTarget), 0u);
        write(file, "content");
        ASSERT_EQ(file.mf_flush(), 0u);
        ASSERT_EQ(file.mf_commit(0), 0u);
        EXPECT_FALSE(file.mf_isOpen());
    }
    EXPECT_EQ(readFile(sTarget), "content");
    EXPECT_EQ(filesBelow(scratch.path()), (std::vector<std::wstring>{L"target.txt"}));
}

TEST_F(TemporaryFileTest, CommitReplacesAnExistingFileOnlyWhenAskedTo) {
    ASSERT_TRUE(writeFile(sTarget, "old"));
    UQTemporaryFile file;
    ASSERT_EQ(file.mf_create(sTarget), 0u);
    write(file, "new");
    const DWORD dwError = file.mf_commit(0);
    EXPECT_TRUE(dwError == ERROR_ALREADY_EXISTS || dwError == ERROR_FILE_EXISTS) << dwError;
    EXPECT_TRUE(file.mf_isOpen());
    EXPECT_EQ(readFile(sTarget), "old");
    ASSERT_EQ(file.mf_commit(1), 0u);
    EXPECT_EQ(readFile(sTarget), "new");
    EXPECT_EQ(filesBelow(scratch.path()), (std::vector<std::wstring>{L"target.txt"}));
}

TEST_F(TemporaryFileTest, FileNeverCommittedIsDeletedWithItsOwner) {
    {
        UQTemporaryFile file;
        ASSERT_EQ(file.mf_create(sTarget), 0u);
        write(file, "half");
    }
    EXPECT_TRUE(filesBelow(scratch.path()).empty());
}

TEST_F(TemporaryFileTest, FileWhoseCommitFailedIsDeletedWithItsOwner) {
    ASSERT_TRUE(writeFile(sTarget, "kept"));
    {
        UQTemporaryFile file;
        ASSERT_EQ(file.mf_create(sTarget), 0u);
        write(file, "refused");
        ASSERT_NE(file.mf_commit(0), 0u);
    }
    EXPECT_EQ(filesBelow(scratch.path()), (std::vector<std::wstring>{L"target.txt"}));
    EXPECT_EQ(readFile(sTarget), "kept");
}

TEST_F(TemporaryFileTest, DiscardDeletesAtOnceAndTwiceDoesNoHarm) {
    UQTemporaryFile file;
    ASSERT_EQ(file.mf_create(sTarget), 0u);
    file.mf_discard();
    EXPECT_FALSE(file.mf_isOpen());
    EXPECT_TRUE(filesBelow(scratch.path()).empty());
    file.mf_discard();
    EXPECT_TRUE(filesBelow(scratch.path()).empty());
}

TEST_F(TemporaryFileTest, MovedFileIsOwnedByItsNewOwnerOnly) {
    UQTemporaryFile moved;
    {
        UQTemporaryFile file;
        ASSERT_EQ(file.mf_create(sTarget), 0u);
        write(file, "moved");
        moved = std::move(file);
        EXPECT_FALSE(file.mf_isOpen());
    }
    // The first owner went without deleting it.
    ASSERT_EQ(filesBelow(scratch.path()).size(), 1u);
    ASSERT_EQ(moved.mf_commit(0), 0u);
    EXPECT_EQ(readFile(sTarget), "moved");
}

TEST_F(TemporaryFileTest, CreatingAgainDeletesTheFirstFile) {
    UQTemporaryFile file;
    ASSERT_EQ(file.mf_create(sTarget), 0u);
    write(file, "first");
    ASSERT_EQ(file.mf_create(scratch.path() + L"\\other.txt"), 0u);
    write(file, "second");
    ASSERT_EQ(filesBelow(scratch.path()).size(), 1u);
    ASSERT_EQ(file.mf_commit(0), 0u);
    EXPECT_EQ(readFile(scratch.path() + L"\\other.txt"), "second");
    EXPECT_FALSE(exists(sTarget));
}

TEST_F(TemporaryFileTest, NamesLeftBehindByAnEarlierRunArePassedOver) {
    // The names the next two temporary files would get, as a killed run of a process of the same number
    // leaves them.
    const std::wstring sProbe = UQSafeFile::mf_temporaryName(sTarget);
    const std::size_t nDash = sProbe.rfind(L'-');
    const unsigned long uNext = std::stoul(sProbe.substr(nDash + 1)) + 1;
    const std::wstring sLeft1 = sProbe.substr(0, nDash + 1) + std::to_wstring(uNext);
    const std::wstring sLeft2 = sProbe.substr(0, nDash + 1) + std::to_wstring(uNext + 1);
    ASSERT_TRUE(writeFile(sLeft1, "left 1"));
    ASSERT_TRUE(writeFile(sLeft2, "left 2"));
    UQTemporaryFile file;
    ASSERT_EQ(file.mf_create(sTarget), 0u);
    write(file, "new");
    ASSERT_EQ(file.mf_commit(0), 0u);
    EXPECT_EQ(readFile(sTarget), "new");
    EXPECT_EQ(readFile(sLeft1), "left 1");
    EXPECT_EQ(readFile(sLeft2), "left 2");
    EXPECT_EQ(filesBelow(scratch.path()).size(), 3u);
}

TEST_F(TemporaryFileTest, FolderThatDoesNotExistIsReportedAndNothingIsMade) {
    UQTemporaryFile file;
    EXPECT_EQ(file.mf_create(scratch.path() + L"\\missing\\target.txt"),
              static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    EXPECT_FALSE(file.mf_isOpen());
    EXPECT_TRUE(filesBelow(scratch.path()).empty());
}

} // namespace
