#include "app/CommandLine.h"

#include <gtest/gtest.h>

TEST(CommandLineTest, QuestionsAndMistakesAreAnsweredAndNothingElseIs)
{
    const struct
    {
        QByteArrayList arguments;
        std::optional<int> status;
        const char *said;
    } cases[] = {
        { {}, {}, "" },
        { { "a.txt", "-", "--", "--version" }, {}, "" },
        { { "-platform", "--version", "--style=fusion", "-reverse" }, {}, "" },
        { { "a.txt", "--version" }, 0, "vantle " },
        { { "-h" }, 0, "Usage: vantle" },
        { { "--verbose", "--help" }, 2, "'--verbose'" },
        { { "-x" }, 2, "'-x'" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').constData());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_EQ(CommandLine::answered(c.arguments), c.status);
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string errors = testing::internal::GetCapturedStderr();
        EXPECT_NE((c.status == 0 ? out : errors).find(c.said), std::string::npos);
        EXPECT_TRUE((c.status == 0 ? errors : out).empty());
    }
}

TEST(CommandLineTest, FilesAndAddressesAreTold)
{
    const std::pair<QByteArrayList, QByteArrayList> cases[] = {
        { { "a", "/b/../c", "n\xE4me", "a:b" },
          { "file:///d/a", "file:///c", "file:///d/n%E4me", "file:///d/a:b" } },
        { { "file:///a%20b", "https://X.org/%7e", "https://X.org/ ä" },
          { "file:///a%20b", "https://X.org/%7e", "https://x.org/%20%C3%A4" } },
        { { "-x", "--gapplication-service", "", "--", "-x" }, { "file:///d/-x" } },
    };
    for (const auto &[arguments, expected] : cases) {
        QByteArrayList urls;
        for (const Address &url : CommandLine::urls(arguments, "/d"))
            urls.append(url.text);
        EXPECT_EQ(urls, expected);
    }
}
