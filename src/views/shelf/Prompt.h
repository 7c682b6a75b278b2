#pragma once

#include <QString>

#include <functional>
#include <optional>

class QWidget;

/// A question that is answered by a line of text. While it stands, the window
/// below takes no input, and the program goes on. Main thread.
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
        int fieldWidth = 260; // Points.
    };

    /// Shows the prompt over the widget's window; `done` gets the text, or none
    /// if it was cancelled or the window went from the screen. One at a time for a
    /// window: a request while one stands only gives that one the keyboard.
    static void ask(QWidget *over, const Request &request,
                    std::function<void(std::optional<QString>)> done);
};
