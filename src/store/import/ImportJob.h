#pragma once

#include "ImportPlan.h"

#include <QObject>
#include <QString>
#include <atomic>
#include <thread>

// Reads one import (LibraryImport::read) on a thread of its own, so that the window stays
// responsive, and the keyboard engine that shares its thread keeps expanding, however large
// or slow the file. Signals arrive on the thread that owns the job.
//
// cancel() tells the reader to stop at its next check (between pieces of a file, records and
// files); from then on the job emits neither progress nor `finished`, only `stopped` once the
// reading thread has ended. Destroying the job cancels it and waits for that moment.
class ImportJob : public QObject {
    Q_OBJECT
public:
    explicit ImportJob(QString path, QObject* parent = nullptr);
    ~ImportJob() override;

    const QString& path() const { return m_path; }
    void start();
    void cancel();
    bool isCancelled() const { return m_cancelled; }

signals:
    // How far the reading got, in thousandths.
    void progressed(int permille);
    // What the import would add, or why it cannot be read (plan.failed()).
    void finished(const ImportPlan& plan);
    // The reading thread has ended, finished or cancelled.
    void stopped();

private:
    void run();

    const QString m_path;
    std::atomic<bool> m_cancelled{false};
    std::thread m_worker;
};
