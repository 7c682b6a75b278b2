#pragma once

#include "platform/TabWindow.h"

#include <vector>

class FakeTabWindow final : public TabWindow
{
public:
    void setRootView(QWidget *view) override { rootView = view; }
    void place(const QRectF &next, DockEdge nextEdge) override
    {
        frame = next;
        edge = nextEdge;
    }
    bool isVisible() const override { return visible; }
    void orderFront() override { visible = true; }
    void orderOut() override { visible = false; }
    bool canFade() const override { return composited; }
    void setOpacity(double value) override
    {
        opacity = value;
        if (visible)
            shownOpacities.push_back(value);
    }

    QWidget *rootView = nullptr;
    QRectF frame;
    DockEdge edge = DockEdge::Right;
    bool visible = false;
    bool composited = true;
    double opacity = 1;
    std::vector<double> shownOpacities; // What a user saw of it.
};
