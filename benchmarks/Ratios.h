#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

// Collects the medians of all benchmarks: of processor time, or of wall time for a benchmark that measures its own
// time. Machines are noisy, so every benchmark is repeated, and the repetitions of all benchmarks are interleaved.
class Medians : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (run.aggregate_name == "median") add(run);
        ConsoleReporter::ReportRuns(runs);
    }

protected:
    // Nanoseconds, by the name of the benchmark.
    std::map<std::string, double> medians;
    // Values, by the names of the benchmark and the counter.
    std::map<std::pair<std::string, std::string>, double> counters;

private:
    void add(const Run& run) {
        const std::string& name = run.run_name.function_name;
        medians[name] = run.run_name.time_type.empty() ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
        for (const auto& [counter, value] : run.counters) counters[{name, counter}] = value.value;
    }
};

// Compares benchmarks of one run by the ratios of their medians.
class Ratios : public Medians {
public:
    // Prints the ratio of each benchmark "CASE/subject" to "CASE/baseline" after the run.
    void compare(const std::string& subject, const std::string& baseline) { pairs.emplace_back(subject, baseline); }

    void Finalize() override {
        for (const auto& [subject, baseline] : pairs) print(subject, baseline);
    }

private:
    void print(const std::string& subject, const std::string& baseline) const {
        double logarithms = 0;
        double largest = 0;
        int count = 0;
        std::printf("\n%s / %s\n", subject.c_str(), baseline.c_str());
        for (const auto& [name, median] : medians) {
            const std::size_t slash = name.rfind('/');
            if (name.substr(slash + 1) != subject) continue;
            const auto other = medians.find(name.substr(0, slash + 1) + baseline);
            if (other == medians.end()) continue;
            const double ratio = median / other->second;
            std::printf("  %-24s %6.3f   (%.1f ns / %.1f ns)\n", name.substr(0, slash).c_str(), ratio, median,
                        other->second);
            logarithms += std::log(ratio);
            largest = std::max(largest, ratio);
            ++count;
        }
        if (count > 0) std::printf("  geometric mean %.3f, largest %.3f\n", std::exp(logarithms / count), largest);
    }

    std::vector<std::pair<std::string, std::string>> pairs;
};

// Runs all registered benchmarks, repeated and interleaved, and reports their medians.
inline int runAndCompare(int argc, char** argv, Medians& reporter) {
    std::vector<char*> arguments(argv, argv + argc);
    std::string interleaved = "--benchmark_enable_random_interleaving=true";
    std::string repetitions = "--benchmark_repetitions=9";
    std::string minTime = "--benchmark_min_time=0.05";
    std::string aggregates = "--benchmark_display_aggregates_only=true";
    for (std::string* argument : {&interleaved, &repetitions, &minTime, &aggregates})
        arguments.insert(arguments.begin() + 1, argument->data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
