#include "views/preview/PreviewPage.h"

#include <QAbstractSlider>

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
