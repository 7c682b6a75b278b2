#include "views/preview/PreviewPage.h"

#include "app/settings/Localizer.h"

#include <QAbstractSlider>

QString PreviewItem::name() const
{
    return title.isEmpty() ? FilePath::display(FilePath::lastComponent(FilePath::fromUrl(url)))
                           : title;
}

void PreviewPage::nameBar(QAbstractSlider &bar, const Localizer &texts)
{
    bar.setAccessibleName(texts.text(bar.orientation() == Qt::Vertical
                                         ? QStringLiteral("preview_scroll_vertical")
                                         : QStringLiteral("preview_scroll_horizontal")));
}

void PreviewPage::scrollBy(QAbstractSlider &bar, Step step)
{
    const auto action = [step] {
        switch (step) {
        case Step::LineUp:
            return QAbstractSlider::SliderSingleStepSub;
        case Step::LineDown:
            return QAbstractSlider::SliderSingleStepAdd;
        case Step::PageUp:
            return QAbstractSlider::SliderPageStepSub;
        case Step::PageDown:
            return QAbstractSlider::SliderPageStepAdd;
        case Step::Start:
            return QAbstractSlider::SliderToMinimum;
        case Step::End:
            return QAbstractSlider::SliderToMaximum;
        }
        return QAbstractSlider::SliderNoAction;
    };
    bar.triggerAction(action());
}
