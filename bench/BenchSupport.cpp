#include "BenchSupport.h"

#include <QStringList>

namespace BenchSupport {
namespace {
const QStringList kWords = {
    "regards", "meeting", "address", "invoice", "thanks", "tomorrow", "schedule", "signature",
    "café",    "déjà",    "résumé",  "office",  "please", "project",  "Müller",   "straße",
    "привет",  "東京",     "report",  "deadline", "phone", "number",  "kind",     "best"};
} // namespace

QList<Snippet> library(int count, QRandomGenerator& random, const QList<QUuid>& categories) {
    QList<Snippet> snippets;
    snippets.reserve(count);
    for (int i = 0; i < count; ++i) {
        QString command = QStringLiteral(";");
        for (int l = 3 + random.bounded(6); l > 0; --l)
            command.append(QChar(u'a' + random.bounded(26)));
        QStringList words;
        for (int w = 10 + random.bounded(51); w > 0; --w)
            words.append(kWords[random.bounded(kWords.size())]);
        snippets.append(Snippet::create(command, words.join(u' '),
                                        categories[random.bounded(categories.size())]));
    }
    return snippets;
}

void RunTimes::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        const double unit = run.time_unit == benchmark::kMicrosecond   ? 1e3
                            : run.time_unit == benchmark::kMillisecond ? 1e6
                                                                       : 1.0;
        m_times[run.benchmark_name()] = {run.GetAdjustedRealTime() * unit,
                                         run.GetAdjustedCPUTime() * unit};
    }
    ConsoleReporter::ReportRuns(runs);
}

std::optional<double> RunTimes::nanos(const std::string& name) const {
    const auto found = m_times.find(name);
    return found == m_times.end() ? std::nullopt : std::optional(found->second.real);
}

std::optional<double> RunTimes::cpuNanos(const std::string& name) const {
    const auto found = m_times.find(name);
    return found == m_times.end() ? std::nullopt : std::optional(found->second.cpu);
}
} // namespace BenchSupport
