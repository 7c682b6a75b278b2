#include "gallery/Exhibit.h"
#include "gallery/Stage.h"

#include "views/onboarding/WelcomeView.h"

#include <QApplication>

namespace {

class WelcomeExhibit final : public Exhibit
{
public:
    enum class Sample { ToDrag, OnTheShelf };

    WelcomeExhibit(const Surroundings &surroundings, int page, Sample sample)
        : m_stage(surroundings)
        , m_view(m_stage.settings, m_stage.store, m_stage.texts, m_stage.store.makeDemoFile(),
                 WelcomeDesktop { m_stage.queue, m_stage.session, m_stage.icons,
                                  Gallery::resources() })
    {
        m_view.setMotion(Motion::Reduced); // Scenes stand still where they tell most.
        m_view.setAttribute(Qt::WA_DontShowOnScreen);
        m_view.resize(m_view.sizeHint());
        m_view.show();
        m_view.go(page);
        if (sample == Sample::OnTheShelf)
            m_stage.store.add({ m_stage.store.makeDemoFile() });
        m_stage.queue.settle();
        QApplication::processEvents();
    }

    QWidget &widget() override { return m_view; }

private:
    Stage m_stage;
    WelcomeView m_view;
};

ExhibitEntry entry(const QString &name, int page, WelcomeExhibit::Sample sample)
{
    return { name, ExhibitEntry::Frame::Window, [page, sample](const Surroundings &surroundings) {
                return std::make_unique<WelcomeExhibit>(surroundings, page, sample);
            } };
}

}

std::vector<ExhibitEntry> welcomeExhibits()
{
    std::vector<ExhibitEntry> result;
    result.reserve(WelcomeView::count + 1);
    for (int page = 0; page < WelcomeView::count; ++page)
        result.push_back(entry(QStringLiteral("welcome-%1").arg(page + 1), page,
                               WelcomeExhibit::Sample::ToDrag));
    result.push_back(entry(QStringLiteral("welcome-done"), WelcomeView::count - 1,
                           WelcomeExhibit::Sample::OnTheShelf));
    return result;
}
