// A console reporter that also prints ns per item and the ratio of ours to a peer.
#ifndef ZKCOMMON_BENCH_RATIO_H
#define ZKCOMMON_BENCH_RATIO_H

#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace zkbench {

/// Benchmarks report items with state.SetItemsProcessed; each pair names our benchmark and the
/// peer's on the same input.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    explicit RatioReporter(std::vector<std::pair<std::string, std::string>> pairs)
        : m_pairs(std::move(pairs)) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            auto items = run.counters.find("items_per_second");
            if (items == run.counters.end() || items->second.value <= 0)
                continue;
            // With repetitions the median stands for the benchmark; single runs count only
            // while there is no median, so that the last repetition doesn't decide.
            if (run.run_type == Run::RT_Aggregate) {
                if (run.aggregate_name == "median") {
                    m_nsPerItem[run.run_name.str()] = 1e9 / items->second.value;
                    m_fromMedian.insert(run.run_name.str());
                }
            } else if (m_fromMedian.count(run.benchmark_name()) == 0) {
                m_nsPerItem[run.benchmark_name()] = 1e9 / items->second.value;
            }
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-34s %12s   %-34s %12s   %s\n", "ours", "ns/item", "peer", "ns/item",
                    "ours/peer");
        for (const auto& pair : m_pairs) {
            double ours = m_nsPerItem[pair.first], peer = m_nsPerItem[pair.second];
            if (ours > 0 && peer > 0)
                std::printf("%-34s %12.2f   %-34s %12.2f   %.2f\n", pair.first.c_str(), ours,
                            pair.second.c_str(), peer, ours / peer);
        }
        for (const auto& entry : m_nsPerItem)
            if (!isPaired(entry.first))
                std::printf("%-34s %12.2f\n", entry.first.c_str(), entry.second);
    }

private:
    bool isPaired(const std::string& name) const {
        for (const auto& pair : m_pairs)
            if (pair.first == name || pair.second == name)
                return true;
        return false;
    }
    std::vector<std::pair<std::string, std::string>> m_pairs;
    std::map<std::string, double> m_nsPerItem;
    std::set<std::string> m_fromMedian;
};

/// Runs the registered benchmarks with a RatioReporter over `pairs`.
inline int runWithRatios(int argc, char** argv,
                         std::vector<std::pair<std::string, std::string>> pairs) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter(std::move(pairs));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

} // namespace zkbench

#endif // ZKCOMMON_BENCH_RATIO_H
