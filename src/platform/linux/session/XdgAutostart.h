#pragma once

#include "platform/Autostart.h"

#include <QByteArray>

/// A desktop entry in the session's autostart folder. An entry that is switched
/// off inside counts as off: session settings dialogs write a line instead of
/// deleting the file.
class XdgAutostart final : public Autostart
{
public:
    /// `executable` is what the session will start: an absolute native path.
    XdgAutostart(const QByteArray &configFolder, QByteArray executable);

    bool enabled() const override;
    std::optional<QString> setEnabled(bool enabled) override;

    /// The path of this process's own program.
    static QByteArray runningExecutable();

private:
    QByteArray entry() const;

    QByteArray m_folder;
    QByteArray m_path;
    QByteArray m_executable;
};
