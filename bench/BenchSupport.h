#pragma once

#include "Category.h"
#include "Snippet.h"

#include <QList>
#include <QRandomGenerator>
#include <QString>
#include <QUuid>
#include <benchmark/benchmark.h>
#include <map>
#include <optional>
#include <string>

// What the benchmarks share: a library of made-up snippets, and the run times that their
// closing lines of ratios are computed from.
namespace BenchSupport {
// `count` snippets with commands of 3 to 8 letters and contents of 10 to 60 words, each in one
// of `categories`; the same for the same `random` seed.
QList<Snippet> library(int count, QRandomGenerator& random,
                       const QList<QUuid>& categories = {Category::defaultCategoryId});

// The console report, keeping each run's wall and CPU time per iteration in nanoseconds by its
// name ("plainKeystroke/1000", "searchKeystroke/1000/process_time").
class RunTimes : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override;
    std::optional<double> nanos(const std::string& name) const;
    std::optional<double> cpuNanos(const std::string& name) const;

private:
    struct Times {
        double real;
        double cpu;
    };
    std::map<std::string, Times> m_times;
};
} // namespace BenchSupport
