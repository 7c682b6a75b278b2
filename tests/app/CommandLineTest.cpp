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
    const struct
    {
        QByteArrayList arguments;
        QByteArrayList urls;
    } cases[] = {
        { { "a", "/b/../c", "n\xE4me", "a:b" },
          { "file:///d/a", "file:///c", "file:///d/n%E4me", "file:///d/a:b" } },
        { { "file:///a%20b", "https://x.org/" }, { "file:///a%20b", "https://x.org/" } },
        { { "-x", "--gapplication-service", "", "--", "-x" }, { "file:///d/-x" } },
    };
    for (const auto &c : cases) {
        QByteArrayList urls;
        for (const QUrl &url : CommandLine::urls(c.arguments, "/d"))
            urls.append(url.toEncoded());
        EXPECT_EQ(urls, c.urls);
    }
}
