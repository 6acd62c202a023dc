// SPDX-License-Identifier: Apache-2.0
#include <qv_cipr/qv_cipr_file.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

class CiprFile : public testing::Test {
protected:
    CiprFile()
    {
        std::string pattern = testing::TempDir() + "qv_cipr_file_XXXXXX";
        const int descriptor = mkstemp(pattern.data());
        EXPECT_GE(descriptor, 0);
        close(descriptor);
        mPath = pattern;
    }

    ~CiprFile() override { unlink(mPath.c_str()); }

    std::string mPath;
};

TEST_F(CiprFile, WritesAndReadsBack)
{
    FILE* file = qv_cipr_fopen(mPath.c_str(), "w+");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(qv_cipr_fwrite("abcdef", 2, 3, file), 3u);
    EXPECT_EQ(qv_cipr_ftell(file), 6);
    EXPECT_EQ(qv_cipr_fseek(file, -4, SEEK_END), 0);
    EXPECT_EQ(qv_cipr_ftell(file), 2);
    char bytes[8] = {};
    // Two objects of two bytes are left, five are asked for.
    EXPECT_EQ(qv_cipr_fread(bytes, 2, 5, file), 2u);
    EXPECT_STREQ(bytes, "cdef");
    EXPECT_EQ(qv_cipr_ferror(file), 0);
    EXPECT_EQ(qv_cipr_fclose(file), 0);
}

TEST_F(CiprFile, OpenOfAMissingFileFails)
{
    errno = 0;
    EXPECT_EQ(qv_cipr_fopen((mPath + ".missing").c_str(), "r"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(CiprFile, ErrorsAreKeptUntilCleared)
{
    FILE* file = qv_cipr_fopen(mPath.c_str(), "r");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(qv_cipr_fwrite("x", 1, 1, file), 0u);
    EXPECT_NE(qv_cipr_ferror(file), 0);
    qv_cipr_clearerr(file);
    EXPECT_EQ(qv_cipr_ferror(file), 0);
    EXPECT_EQ(qv_cipr_fseek(file, -1, SEEK_SET), -1);
    EXPECT_EQ(qv_cipr_fclose(file), 0);
}

} // namespace
