// SPDX-License-Identifier: Apache-2.0
// Numbers of graphs are read alike in all locales.
#include "kernels/KernelsFixture.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <locale.h>
#include <locale>

#include <unistd.h>

namespace graphtest {

namespace {

/// Makes the C library write 1,5 for one and a half as long as it lives, with a locale that is compiled for the purpose. The
/// compiler comes with the C library; character maps may not be installed, so there is one of our own.
class DecimalCommaLocale {
public:
    DecimalCommaLocale()
    {
        std::filesystem::create_directories(mFolder + "/compiled");
        writeCharacterMap(mFolder + "/ascii");
        std::ofstream(mFolder + "/comma") << "comment_char %\nescape_char /\nLC_NUMERIC\ndecimal_point \"<U002C>\"\n"
                                             "thousands_sep \"<U002E>\"\ngrouping 3;3\nEND LC_NUMERIC\n";
        const std::string command =
            "cd '" + mFolder + "' && localedef -c -i ./comma -f ./ascii ./compiled/comma >/dev/null 2>&1";
        if (std::system(command.c_str()) == -1) return;
        setenv("LOCPATH", (mFolder + "/compiled").c_str(), 1);
        setlocale(LC_NUMERIC, "comma");
    }

    ~DecimalCommaLocale()
    {
        setlocale(LC_NUMERIC, "C");
        unsetenv("LOCPATH");
        std::error_code ignored;
        std::filesystem::remove_all(mFolder, ignored);
    }

    DecimalCommaLocale(const DecimalCommaLocale&) = delete;
    DecimalCommaLocale& operator=(const DecimalCommaLocale&) = delete;

    static bool isInUse() { return std::strtof("1,5", nullptr) == 1.5F; }

private:
    static void writeCharacterMap(const std::string& file)
    {
        std::ofstream map(file);
        map << "<code_set_name> ASCII\n<comment_char> %\n<escape_char> /\n<mb_cur_min> 1\n<mb_cur_max> 1\nCHARMAP\n";
        map << std::hex << std::uppercase << std::setfill('0');
        for (int code = 0; code < 128; ++code)
            map << "<U" << std::setw(4) << code << "> /x" << std::setw(2) << code << " CHARACTER\n";
        map << "END CHARMAP\n";
    }

    const std::string mFolder = scratchFile("locale");
};

/// The same for streams.
class CommaPunctuation : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class NumberLocaleTest : public KernelsTest {
protected:
    NumberLocaleTest()
    {
        std::string limits;
        for (int i = 1; i <= 56; ++i) limits += (i > 1 ? "," : "") + std::to_string(1000 * i) + ".25";
        initWith(element("source", "sensor", "dol_mode='two' conversion_gain='2.5'") +
                 "<mbr_data><stream_id id='1' value='" + limits + "'/></mbr_data>");
    }

    void expectTheNumbersOfTheGraph()
    {
        float gain = 0.0F;
        std::string mode;
        EXPECT_EQ(mUtils->getDolInfo(gain, mode), StatusOk);
        EXPECT_EQ(gain, 2.5F);
        qv_view_mbr_limits_t limits = {};
        EXPECT_EQ(mUtils->getMbrData(1, &limits), StatusOk);
        EXPECT_EQ(limits.values[0][0], 1000.25F);
        EXPECT_EQ(limits.values[6][7], 56000.25F);
    }
};

TEST_F(NumberLocaleTest, NumbersDoNotDependOnTheLocaleOfTheProcess)
{
    const DecimalCommaLocale locale;
    ASSERT_TRUE(DecimalCommaLocale::isInUse()) << "localedef, which comes with the C library, compiled no locale";
    expectTheNumbersOfTheGraph();
    EXPECT_TRUE(DecimalCommaLocale::isInUse()) << "and reading them does not change it";
}

TEST_F(NumberLocaleTest, NumbersDoNotDependOnTheLocaleOfStreams)
{
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
    expectTheNumbersOfTheGraph();
    std::locale::global(before);
}

} // namespace

} // namespace graphtest
