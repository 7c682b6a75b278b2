#include "gallery/Exhibit.h"
#include "gallery/Stage.h"

#include "fileops/ThumbnailLoader.h"
#include "platform/fake/FakePictureDecoder.h"
#include "platform/fake/FakeThumbnailGenerator.h"
#include "store/QuickLookController.h"
#include "views/look/Look.h"
#include "views/shelf/ShelfView.h"

#include <QApplication>
#include <QListView>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>

namespace {

class PanelExhibit final : public Exhibit
{
public:
    explicit PanelExhibit(const Surroundings &surroundings)
        : stage(surroundings)
        , view(stage.store, stage.settings, stage.texts, m_ql, stage.icons, stage.session,
               stage.queue, Gallery::resources())
    {
        view.setAttribute(Qt::WA_DontShowOnScreen);
        view.resize(QSize(238, 318) * surroundings.textScale); // As the panel does.
        view.show();
        settle(1);
    }

    QWidget &widget() override { return view; }

    void settle(double seconds)
    {
        stage.queue.advance(seconds);
        QApplication::processEvents();
    }

    enum class Part { Row, Button };
    /// Moves the pointer there.
    void hover(int row, Part part)
    {
        stage.queue.settle();
        auto *list = view.findChild<QListView *>();
        const QRect rect = list->visualRect(list->model()->index(row, 0));
        QPointF at = rect.center();
        if (part == Part::Button)
            at.setX(view.isRightToLeft() ? rect.left() + 38 : rect.right() - 38);
        QMouseEvent move(QEvent::MouseMove, at, at, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(list->viewport(), &move);
    }

    /// Every row whose file is a picture gets one.
    void showPictures()
    {
        view.setThumbnails(m_thumbnails);
        settle(0.1);
        for (const auto &request : std::exchange(m_decoder.requests, {})) {
            if (request.kind == FakePictureDecoder::Kind::Image)
                request.picture(PictureDecoder::Picture { landscape(), { 4000, 3000 }, 1, "1" });
        }
    }

    Stage stage;

private:
    static QImage landscape()
    {
        QImage image(96, 72, QImage::Format_RGB32);
        QPainter painter(&image);
        QLinearGradient sky(0, 0, 0, 50);
        sky.setColorAt(0, QColor(0x5b, 0x8d, 0xd6));
        sky.setColorAt(1, QColor(0xf6, 0xd6, 0xa8));
        painter.fillRect(image.rect(), sky);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0x3f, 0x5e, 0x4e));
        painter.drawPolygon(
            QPolygon({ { 0, 72 }, { 0, 50 }, { 30, 26 }, { 60, 52 }, { 96, 40 }, { 96, 72 } }));
        return image;
    }

    QuickLookController m_ql;
    FakePictureDecoder m_decoder;
    FakeThumbnailGenerator m_generator;
    Thumbnails m_thumbnails { m_decoder, m_generator };

public:
    ShelfView view;
};

using Part = PanelExhibit::Part;

struct State
{
    const char *name;
    std::function<void(PanelExhibit &)> prepare;
    double pause = 0.5; // Until the picture is taken.
};

void usual(PanelExhibit &s)
{
    s.stage.fillUsual();
}

void longNames(PanelExhibit &s)
{
    s.stage.fill({ QStringLiteral("/home/ada/Documents/A very long name that goes on and on until "
                                  "nobody reads it any more (final version 3).docx"),
                   QStringLiteral("/very/deep/") + QStringLiteral("folder/").repeated(40)
                       + QStringLiteral("x.c"),
                   QStringLiteral("/home/ada/") + QString(5000, u'w') + QStringLiteral(".txt"),
                   QStringLiteral("/home/ada/two\nlines\tand a tab.md"),
                   QStringLiteral("/home/ada/تقرير سنوي.pdf"),
                   QStringLiteral("/home/ada/写真 東京.png"),
                   QStringLiteral("/home/ada/令和五年度 決算報告書 最終版 経理部確認済み.xlsx") });
}

std::vector<State> emptyStates()
{
    return {
        { "empty", [](PanelExhibit &) {} },
        { "empty-targeted", [](PanelExhibit &s) { s.view.setTargeted(true); } },
        { "empty-smallest", [](PanelExhibit &s) { s.view.resize(s.view.minimumSize()); } },
        { "empty-toast",
          [](PanelExhibit &s) { s.view.showToast(s.stage.text("removed_n_undo", { 12 })); } },
    };
}

std::vector<State> titleStates()
{
    return {
        { "pinned",
          [](PanelExhibit &s) {
              usual(s);
              s.stage.store.togglePin(s.stage.store.currentID.value());
          } },
        { "pinned-long-title",
          [](PanelExhibit &s) {
              usual(s);
              const auto id = s.stage.store.currentID.value();
              s.stage.store.renameShelf(id,
                                        QStringLiteral("Everything that the tax office asked for"));
              s.stage.store.togglePin(id);
          } },
        { "focus-title",
          [](PanelExhibit &s) {
              usual(s);
              s.settle(0.1);
              // Without a window system no window becomes active by itself.
              QEvent activate(QEvent::WindowActivate);
              QApplication::setActiveWindow(&s.view);
              QApplication::sendEvent(&s.view, &activate);
              s.view.findChild<QPushButton *>()->setFocus(Qt::TabFocusReason);
          } },
    };
}

std::vector<State> toastStates()
{
    return {
        { "toast",
          [](PanelExhibit &s) {
              usual(s);
              s.view.showToast(s.stage.text("removed_n_undo", { 3 }));
          } },
        { "toast-long",
          [](PanelExhibit &s) {
              usual(s);
              s.view.showToast(s.stage.text(
                  "rename_failed",
                  { QStringLiteral("“Annual report 2023 (final, reviewed, really).pdf”:"
                                   " the server did not answer in time and then "
                                   "closed the connection") }));
          } },
    };
}

std::vector<State> promptStates()
{
    return {
        { "rename-shelf",
          [](PanelExhibit &s) {
              usual(s);
              s.view.rename();
          } },
        { "rename-file",
          [](PanelExhibit &s) {
              usual(s);
              s.view.resize(s.view.minimumSize() * Look::textScale);
              s.view.rename(s.stage.store.items.value().first());
          } },
    };
}

std::vector<State> listStates()
{
    return {
        { "one",
          [](PanelExhibit &s) {
              s.stage.fill({ QStringLiteral("/home/ada/Documents/Annual report.pdf") });
          } },
        { "full", usual },
        { "pictures",
          [](PanelExhibit &s) {
              usual(s);
              s.settle(0.5);
              s.showPictures();
          } },
        { "many",
          [](PanelExhibit &s) {
              QStringList paths;
              for (int i = 1; i <= 1234; ++i)
                  paths << QStringLiteral("/srv/scans/page %1.png").arg(i, 4, 10, QChar(u'0'));
              s.stage.fill(paths);
              s.stage.queue.settle();
              s.stage.store.focus.set(s.stage.store.items.value()[700].id);
          } },
        { "hover",
          [](PanelExhibit &s) {
              usual(s);
              s.hover(1, Part::Row);
          } },
        { "hover-button",
          [](PanelExhibit &s) {
              usual(s);
              s.hover(1, Part::Button);
          } },
        { "selected",
          [](PanelExhibit &s) {
              usual(s);
              s.stage.select({ 1, 2, 4 });
              s.hover(2, Part::Row);
          } },
        { "targeted",
          [](PanelExhibit &s) {
              usual(s);
              s.view.setTargeted(true);
          } },
        { "smallest",
          [](PanelExhibit &s) {
              usual(s);
              s.view.resize(s.view.minimumSize());
          } },
        { "removing", // In the middle of the motion.
          [](PanelExhibit &s) {
              usual(s);
              s.stage.queue.settle();
              auto items = s.stage.store.items.value();
              items.removeAt(1);
              items.insert(1, Stage::item(QStringLiteral("/home/ada/new.ods")));
              s.stage.store.items.set(items);
              s.stage.queue.advance(0.09);
          },
          0 },
        { "long-names", longNames },
        { "long-names-hover",
          [](PanelExhibit &s) {
              longNames(s);
              s.hover(0, Part::Button);
          } },
    };
}

}

std::vector<ExhibitEntry> panelExhibits()
{
    std::vector<ExhibitEntry> result;
    for (const auto &states :
         { emptyStates(), listStates(), titleStates(), toastStates(), promptStates() }) {
        for (const State &state : states) {
            result.push_back({ QLatin1String(state.name), ExhibitEntry::Frame::Panel,
                               [state](const Surroundings &surroundings) {
                                   auto exhibit = std::make_unique<PanelExhibit>(surroundings);
                                   state.prepare(*exhibit);
                                   exhibit->settle(state.pause);
                                   return exhibit;
                               } });
        }
    }
    return result;
}
