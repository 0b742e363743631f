#include "MainQueue.h"

#include <QCoreApplication>
#include <QTimer>
#include <cmath>

namespace {
QObject* contextOrApp(QObject* context) {
    return context ? context : QCoreApplication::instance();
}
} // namespace

void MainQueue::async(std::function<void()> work, QObject* context) {
    QMetaObject::invokeMethod(contextOrApp(context), std::move(work), Qt::QueuedConnection);
}

void MainQueue::after(double seconds, std::function<void()> work, QObject* context) {
    const double ms = std::isfinite(seconds) ? std::max(0.0, seconds * 1000.0) : 0.0;
    QTimer::singleShot(std::chrono::milliseconds(std::llround(ms)), Qt::PreciseTimer,
                       contextOrApp(context), std::move(work));
}
