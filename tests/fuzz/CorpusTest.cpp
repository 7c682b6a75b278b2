#include "FileForms.h"
#include "base/NativeFile.h"

#include <gtest/gtest.h>

/// The files of the corpus are named "good-…" or "bad-…" for what must become of them.
TEST(CorpusTest, EveryFileIsReadOrRefusedAsItsNameSays)
{
    using FileForms::Verdict;
    const std::pair<const char *, Verdict (*)(const QByteArray &)> forms[] = {
        { "shelves", FileForms::shelves },
        { "uploads", FileForms::uploads },
        { "bookmark", FileForms::bookmark },
        { "webloc", FileForms::webloc },
    };
    for (const auto &[form, judge] : forms) {
        const QByteArray folder = QByteArray(VANTLE_SOURCE_DIR "/tests/fuzz/corpus/") + form;
        int good = 0;
        int bad = 0;
        for (const QByteArray &name : NativeFile::namesIn(folder)) {
            const auto bytes = NativeFile::read(folder + '/' + name).bytes;
            ASSERT_TRUE(bytes);
            const bool kept = name.startsWith("good-");
            EXPECT_EQ(judge(*bytes), kept ? Verdict::Kept : Verdict::Refused)
                << form << '/' << name.constData();
            (kept ? good : bad) += 1;
        }
        EXPECT_GT(good, 2) << form;
        EXPECT_GT(bad, 5) << form;
    }
}
