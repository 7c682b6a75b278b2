#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <vector>

class QWidget;
struct Surroundings;

/// A view in one state, with everything that it lives on.
class Exhibit
{
public:
    virtual ~Exhibit() = default;
    virtual QWidget &widget() = 0;
};

struct ExhibitEntry
{
    /// What stands around the view: a desktop and the panel's border, or nothing.
    enum class Frame { Panel, Window };

    QString name;
    Frame frame;
    /// After Gallery::apply() for the same surroundings.
    std::function<std::unique_ptr<Exhibit>(const Surroundings &)> make;
};

std::vector<ExhibitEntry> panelExhibits();
std::vector<ExhibitEntry> menuExhibits();
std::vector<ExhibitEntry> windowExhibits(); // Settings, recorder, about, and the tab.
std::vector<ExhibitEntry> welcomeExhibits();
std::vector<ExhibitEntry> previewExhibits();
std::vector<ExhibitEntry> allExhibits();
