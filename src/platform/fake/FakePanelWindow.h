#pragma once

#include "platform/PanelWindow.h"

#include <QStringList>

#include <vector>

class FakePanelWindow final : public PanelWindow
{
public:
    void setRootView(QWidget *view) override { rootView = view; }
    QRectF frame() const override { return currentFrame; }
    void setFrame(const QRectF &frame) override { currentFrame = frame; }
    void setSmallestSize(const QSizeF &size) override
    {
        currentFrame.setSize(currentFrame.size().expandedTo(size));
    }
    bool isVisible() const override { return visible; }
    void orderFront() override
    {
        visible = true;
        calls.append(QStringLiteral("orderFront"));
    }
    void orderOut() override
    {
        visible = false;
        calls.append(QStringLiteral("orderOut"));
    }
    void focus() override { calls.append(QStringLiteral("focus")); }
    bool canFade() const override { return composited; }
    void setOpacity(double value) override
    {
        opacity = value;
        if (visible)
            shownOpacities.push_back(value);
    }
    void setSlide(const QPointF &offset) override { slide = offset; }
    void performDrag() override { calls.append(QStringLiteral("performDrag")); }

    QWidget *rootView = nullptr;
    QRectF currentFrame;
    bool visible = false;
    bool composited = true;
    double opacity = 1;
    QPointF slide;
    QStringList calls;
    std::vector<double> shownOpacities; // What a user saw of it.
};
