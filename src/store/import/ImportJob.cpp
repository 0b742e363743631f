#include "ImportJob.h"

#include "ImportReader.h"
#include "LibraryImport.h"

ImportJob::ImportJob(QString path, QObject* parent) : QObject(parent), m_path(std::move(path)) {}

ImportJob::~ImportJob() {
    cancel();
    // The reader stops at its next check; its last queued call dies with this object.
    if (m_worker.joinable())
        m_worker.join();
}

void ImportJob::start() {
    Q_ASSERT(!m_worker.joinable());
    m_worker = std::thread(&ImportJob::run, this);
}

void ImportJob::cancel() {
    m_cancelled = true;
}

void ImportJob::run() {
    ImportReader reader(&m_cancelled, [this](int permille) {
        QMetaObject::invokeMethod(
            this,
            [this, permille] {
                if (!m_cancelled)
                    emit progressed(permille);
            },
            Qt::QueuedConnection);
    });
    const ImportPlan plan = LibraryImport::read(m_path, reader);
    // The thread's last act: by the time this runs on the owner's thread, it has ended or is
    // just returning, so joining it does not wait.
    QMetaObject::invokeMethod(
        this,
        [this, plan] {
            m_worker.join();
            if (!m_cancelled)
                emit finished(plan);
            emit stopped();
        },
        Qt::QueuedConnection);
}
