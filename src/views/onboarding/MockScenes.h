#pragma once

#include "views/onboarding/Scene.h"

#include <QStringList>

class DragSession;
class Localizer;

/// What the mock-ups need to look like the program.
struct MockSources
{
    MainQueue &queue;
    const Localizer &texts;
    DragSession &session; // Of buttons that are only painted.
    QString resources;
};

/// Things gather on the shelf.
class IntroScene final : public Scene
{
public:
    explicit IntroScene(const MockSources &sources);

protected:
    void draw(QPainter &painter, double time) override;

private:
    Mocks m_mocks;
};

/// A file is carried from a window to the shelf and dropped there.
class DragScene final : public Scene
{
public:
    explicit DragScene(const MockSources &sources);

protected:
    void draw(QPainter &painter, double time) override;

private:
    Mocks m_mocks;
};

/// A file is carried from the shelf into a message.
class OutScene final : public Scene
{
public:
    explicit OutScene(const MockSources &sources);

protected:
    void draw(QPainter &painter, double time) override;

private:
    Mocks m_mocks;
};

/// The keys of the hot key bring the shelf up and put it away.
class HotkeyScene final : public Scene
{
public:
    explicit HotkeyScene(const MockSources &sources);

    /// As users of this desktop read it: "Ctrl+Alt+S".
    void setShortcut(const QString &shortcut);

protected:
    void draw(QPainter &painter, double time) override;

private:
    Mocks m_mocks;
    QStringList m_keys;
};
