#include "StoreWorld.h"

#include <QStringList>

namespace {

const QHash<char, Modifiers> clicks { { 's', EventModifier::Shift },
                                      { 'c', EventModifier::Command },
                                      { 'b', EventModifier::Shift | EventModifier::Command } };

/// Six entries, and what is selected of them as a row of digits.
class Rows : public World
{
public:
    Rows()
    {
        store().add(files(6));
        for (int index = 0; index < 6; ++index)
            m_ids.append(id(index));
    }

    /// "3" a click, "s3" with Shift, "c3" with Command, "b3" with both, "u" and "d"
    /// the arrow keys, "U" and "D" with Shift, "-3" the entry's removal.
    void play(const char *story)
    {
        for (const QString &step : QString::fromLatin1(story).split(u' ', Qt::SkipEmptyParts)) {
            const char kind = step.front().toLatin1();
            const QUuid row = m_ids.value(step.back().digitValue());
            if (kind == 'u' || kind == 'd')
                store().moveSelection(kind == 'u' ? -1 : 1, ShelfStore::Extend::No);
            else if (kind == 'U' || kind == 'D')
                store().moveSelection(kind == 'U' ? -1 : 1, ShelfStore::Extend::Yes);
            else if (kind == '-')
                store().removeIds({ row });
            else
                store().click(row, clicks.value(kind));
        }
    }

    std::string selected()
    {
        std::string digits;
        for (const ShelfItem &item : store().selectedItems())
            digits += static_cast<char>('0' + m_ids.indexOf(item.id));
        return digits;
    }

    std::string focused()
    {
        const auto focus = store().focus.value();
        return focus ? std::to_string(m_ids.indexOf(*focus)) : "none";
    }

private:
    QList<QUuid> m_ids;
};

}

TEST(SelectionTest, ClicksAndArrowsSelectAsInAFileList)
{
    const struct
    {
        const char *story, *selected, *focused;
    } cases[] = {
        { "2", "2", "2" },           { "2 4", "4", "4" },          { "s3", "3", "3" },
        { "s3 s5", "345", "5" },     { "3 s5 s1", "123", "1" },    { "1 c3 c5", "135", "5" },
        { "1 c3 c3", "1", "3" },     { "1 c3 c3 s5", "345", "5" }, { "2 -2 s4", "4", "4" },
        { "2 -2 s4 s5", "45", "5" }, { "c4 c1", "14", "1" },       { "d", "0", "0" },
        { "u", "5", "5" },           { "5 d", "5", "5" },          { "0 u", "0", "0" },
        { "2 d d u", "3", "3" },     { "2 D D", "234", "4" },      { "2 D D U U U", "12", "1" },
        { "D", "0", "0" },           { "D D", "01", "1" },         { "2 D d D", "45", "5" },
        { "1 b4", "14", "4" },       { "4 -4 d", "0", "0" },       { "4 -4 u", "5", "5" },
        { "2 s4 D", "2345", "5" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.story);
        Rows rows;
        rows.play(c.story);
        EXPECT_EQ(rows.selected(), c.selected);
        EXPECT_EQ(rows.focused(), c.focused);
    }
}
