#pragma once

#include "decoder/DecoderProtocol.h"
#include "platform/PictureDecoder.h"
#include "platform/linux/files/FileLanes.h"

#include <QSet>

#include <list>
#include <memory>
#include <vector>

class HelperProcess;
class MainQueue;
struct stat;

/// Decodes in as many processes as there are cores. They start with the first
/// request and end when nothing was asked for some minutes. One that crashes, or
/// takes longer than its time, costs the answer that it owed and is replaced. What
/// could not be decoded is not tried again for as long as the file is the same.
class DecoderPool final : public PictureDecoder
{
public:
    /// program: the path of vantle-decoder. The lanes outlive the pool.
    DecoderPool(QString program, FileLanes &lanes, MainQueue &queue);
    ~DecoderPool() override;
    DecoderPool(const DecoderPool &) = delete;
    DecoderPool &operator=(const DecoderPool &) = delete;

    /// What version() tells of a file.
    static QByteArray versionOf(const struct stat &status);

    Ticket version(const QUrl &url, Answer<QByteArray> answer) override;
    Ticket image(const QUrl &url, int maxPixel, Urgency urgency, Answer<Picture> answer) override;
    Ticket imageFromData(const QByteArray &data, Answer<Picture> answer) override;
    Ticket page(const QUrl &url, int page, int maxPixel, Urgency urgency,
                Answer<Picture> answer) override;
    Ticket frames(const QUrl &url, int first, int maxPixel, Answer<QList<Frame>> answer) override;
    Ticket archive(const QUrl &url, Answer<Listing> answer) override;

private:
    struct Work;
    struct Worker; // A process and what it is doing.
    using WorkPointer = std::shared_ptr<Work>;
    using WorkerPointer = std::shared_ptr<Worker>;

    Ticket ask(Work work);
    void advance();
    void open(const WorkPointer &work);
    WorkerPointer freeWorker();
    void begin(const WorkerPointer &worker, const WorkPointer &work);
    void finished(Worker &worker, const DecoderProtocol::Result &result);
    void rememberFailure(const Work &work);
    void lost(const WorkerPointer &worker);
    void loseSoon(const std::weak_ptr<Worker> &worker, const WorkPointer &tooLong);
    static void answer(const Work &work, const DecoderProtocol::Result &result);
    void restOrEnd();

    const QString m_program;
    FileLanes &m_lanes;
    MainQueue &m_queue;
    std::list<WorkPointer> m_work; // What is not begun, the most urgent first.
    std::vector<WorkerPointer> m_workers;
    QSet<QByteArray> m_failures; // Of local files as they are: Work::failure().
    bool m_missing = false; // The decoder program is not there.
    Ticket m_rest; // Runs while nothing is asked for.
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // Posted tasks ask it first.
};
