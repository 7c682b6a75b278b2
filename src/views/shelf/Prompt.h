#pragma once

#include <QString>

#include <functional>
#include <optional>

class QWidget;

/// A question that is answered by a line of text. It stands inside the view that it
/// belongs to and covers all of it: what lies below takes neither keys nor presses
/// meanwhile, and the program goes on. Main thread.
class Prompt
{
public:
    struct Request
    {
        QString message;
        QString text; // What the field holds at first.
        qsizetype selectionLength = -1; // Selected from the start; all of it if negative.
        QString accept; // Texts of the two buttons.
        QString cancel;
        int fieldWidth = 260; // Points, where there is room.
    };

    /// `done` gets the text, or none if it was cancelled or the view went from the screen. One
    /// at a time for a view: a request while one stands only gives that one the keyboard.
    static void ask(QWidget *over, const Request &request,
                    std::function<void(std::optional<QString>)> done);
    static bool stands(const QWidget &over);
};
