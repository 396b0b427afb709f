#pragma once

// The report of threads_benchmark: the questions with measured and required figures, and the tables by number of
// threads.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/ArrayWays.h"
#include "benchmarks/MarkdownTable.h"
#include "benchmarks/Ratios.h"

constexpr std::size_t ARRAYS = 120;
inline constexpr unsigned int TEAMS[] = {1, 2, 4, 8};
inline constexpr char ALL_PAIRS[] = "six pairs in turn";
inline constexpr char NEW_PAIRS[] = "new pairs";

// Requests of 10 and of 100 points. REQUEST is a request of 1,000 points.
inline constexpr Way REQUEST_OF_10{"request of 10 points", Form::OF_THE_CRS, 0, makeRequests<10>};
inline constexpr Way REQUEST_OF_100{"request of 100 points", Form::OF_THE_CRS, 0, makeRequests<100>};
inline constexpr Way CONSTRUCTION{"construction", Form::OF_THE_CRS, 0, makeConstruction};

inline const std::vector<Way> WAYS_ON_THREADS = {
    POINT_TRANSFORMER,
    REQUEST,
    TRANSFORM_TO,
    PROJ_GENERIC,
#if defined(COORDTRANS_HAVE_GDAL)
    GDAL,
#endif
};

// Names of benchmarks.
inline std::string nameOfOneThread(const std::string& pair) { return pair + "/one thread"; }
inline std::string nameOfConstruction(const std::string& pair) { return pair + "/construction alone"; }
inline std::string nameOf(const std::string& pairs, const Way& way) { return pairs + "/" + way.name; }

// Names of counters.
inline std::string nameOf(const Way& way, const Way& other) { return std::string(way.name) + " / " + other.name; }
inline std::string nameOf(unsigned int threads) { return std::to_string(threads); }
inline std::string nameOfScale(unsigned int many, unsigned int few) { return nameOf(many) + " against " + nameOf(few); }
inline std::string nameOfProcessorTime(unsigned int many, unsigned int few) {
    return "processor time, " + nameOfScale(many, few);
}

// Returns the points per second of several threads over those of one, by mean value analysis of a closed queue. Each
// thread works for the time `alone` and then needs a lock for the time `locked`. Each thread has its own core.
inline double modelSpeedUp(unsigned int threads, double alone, double locked) {
    double waiting = 0;
    double rate = 0;
    for (unsigned int n = 1; n <= threads; ++n) {
        const double answer = locked * (1 + waiting);
        rate = n / (alone + answer);
        waiting = rate * answer;
    }
    return rate * (alone + locked);
}

class ThreadsReport : public Medians {
public:
    explicit ThreadsReport(std::vector<std::string> namesOfPairs) : pairs(std::move(namesOfPairs)) {}

    void Finalize() override {
        printQuestions();
        printOneThread();
        printCurve();
        printProcessorTime();
        printRequests();
        printModel();
    }

private:
    // The geometric mean and the range of a figure over several pairs. The mean is not a number if a figure is missing.
    struct Spread {
        double mean;
        double least;
        double greatest;
    };

    template <typename Figure>
    static Spread spreadOver(const std::vector<std::string>& cases, Figure figure) {
        Spread spread{0, HUGE_VAL, 0};
        for (const std::string& each : cases) {
            const double value = figure(each);
            spread.mean += std::log(value) / static_cast<double>(cases.size());
            spread.least = std::min(spread.least, value);
            spread.greatest = std::max(spread.greatest, value);
        }
        spread.mean = std::exp(spread.mean);
        return spread;
    }

    double counterOf(const std::string& name, const std::string& counter) const {
        const auto found = counters.find({name, counter});
        return found == counters.end() ? NAN : found->second;
    }

    // Nanoseconds per point, of one thread and of a team.
    double alone(const std::string& pair, const Way& way) const { return counterOf(nameOfOneThread(pair), way.name); }
    double together(const std::string& pair, const Way& way, unsigned int threads) const {
        return counterOf(nameOf(pair, way), nameOf(threads));
    }

    Spread compare(const Way& way, const Way& other) const {
        return spreadOver(
            pairs, [&](const std::string& pair) { return counterOf(nameOfOneThread(pair), nameOf(way, other)); });
    }

    // Points per second of `many` threads over those of `few`.
    Spread scale(const std::vector<std::string>& cases, const Way& way, unsigned int few, unsigned int many) const {
        return spreadOver(
            cases, [&](const std::string& pair) { return counterOf(nameOf(pair, way), nameOfScale(many, few)); });
    }

    static std::string write(double value, const char* format = "%.2f") {
        char text[32];
        std::snprintf(text, sizeof text, format, value);
        return std::isnan(value) ? "-" : text;
    }

    static void addQuestion(MarkdownTable& table, const char* question, const Spread& measured, const char* required,
                            const char* format = "%.2f") {
        table.add({question, write(measured.mean, format),
                   write(measured.least, format) + " to " + write(measured.greatest, format), required});
    }

    void printQuestions() const {
        MarkdownTable table({"question", "geometric mean", "pairs", "required"});
        addWays(table);
        addThreads(table);
        addConstruction(table);
        addTransformTo(table);
        addPeers(table);
        table.print("Questions");
    }

    void addWays(MarkdownTable& table) const {
        addQuestion(table, "PointTransformer, one thread, time against proj_trans_generic on the ready operation",
                    compare(POINT_TRANSFORMER, PROJ_GENERIC), "at most 1.03", "%.3f");
        addQuestion(table, "the same if PROJ converts degrees and axes too", compare(POINT_TRANSFORMER, PROJ_WHOLE), "",
                    "%.3f");
#if defined(COORDTRANS_HAVE_GDAL)
        addQuestion(table, "the same against GDAL's array Transform", compare(POINT_TRANSFORMER, GDAL), "at most 0.85",
                    "%.3f");
#endif
        addQuestion(table, "the same against transformTo", compare(POINT_TRANSFORMER, TRANSFORM_TO), "at most 0.95",
                    "%.3f");
    }

    void addThreads(MarkdownTable& table) const {
        addQuestion(table, "PointTransformer, points per second: two threads against one, the same pair",
                    scale(pairs, POINT_TRANSFORMER, 1, 2), "at least 1.9");
        addQuestion(table, "two threads against one, different pairs", scale({ALL_PAIRS}, POINT_TRANSFORMER, 1, 2),
                    "at least 1.9");
        addQuestion(table, "eight threads against two, the same pair", scale(pairs, POINT_TRANSFORMER, 2, 8),
                    "at least 0.95");
        addQuestion(table, "eight threads against two, different pairs", scale({ALL_PAIRS}, POINT_TRANSFORMER, 2, 8),
                    "at least 0.95");
    }

    void addConstruction(MarkdownTable& table) const {
        const auto construction = [this](const std::string& pair) {
            const auto found = medians.find(nameOfConstruction(pair));
            return found == medians.end() ? NAN : found->second;
        };
        addQuestion(table, "construction of a PointTransformer for a pair in use, ns", spreadOver(pairs, construction),
                    "at most 300", "%.0f");
        addQuestion(table, "construction for a new pair, ns", spreadOver({NEW_PAIRS}, construction), "at most 200000",
                    "%.0f");
    }

    void addTransformTo(MarkdownTable& table) const {
        addQuestion(table, "transformTo, points per second: two threads against one", scale(pairs, TRANSFORM_TO, 1, 2),
                    "at least 0.9");
        addQuestion(table, "eight threads against one", scale(pairs, TRANSFORM_TO, 1, 8), "at least 0.9");
        addQuestion(table, "transformTo, one thread, time against proj_trans on the ready operation",
                    compare(TRANSFORM_TO, PROJ_TRANS), "at most 1.11", "%.3f");
    }

    void addPeers(MarkdownTable& table) const {
        addQuestion(table, "PROJ, a context for each thread: two threads against one", scale(pairs, PROJ_GENERIC, 1, 2),
                    "");
#if defined(COORDTRANS_HAVE_GDAL)
        addQuestion(table, "GDAL, an object for each thread: two threads against one", scale(pairs, GDAL, 1, 2), "");
#endif
    }

    void printOneThread() const {
        std::vector<Way> ways = {POINT_TRANSFORMER, TRANSFORM_TO, PROJ_GENERIC, PROJ_WHOLE, PROJ_TRANS};
#if defined(COORDTRANS_HAVE_GDAL)
        ways.push_back(GDAL);
#endif
        MarkdownTable::Row header{"pair"};
        for (const Way& way : ways) header.emplace_back(way.name);
        MarkdownTable table(header);
        for (const std::string& pair : pairs) {
            MarkdownTable::Row row{pair};
            for (const Way& way : ways) row.push_back(write(alone(pair, way), "%.1f"));
            table.add(row);
        }
        table.print("One thread, arrays of 1,000: ns per point");
    }

    template <typename Cell>
    static void printByThreads(const char* title, const std::vector<Way>& ways, Cell cell) {
        MarkdownTable table({"threads", "1", "2", "4", "8"});
        for (const Way& way : ways) {
            MarkdownTable::Row row{way.name};
            for (const unsigned int threads : TEAMS) row.push_back(cell(way, threads));
            table.add(row);
        }
        table.print(title);
    }

    void printCurve() const {
        printByThreads("Million points per second of wall time, and ratio to one thread", WAYS_ON_THREADS,
                       [this](const Way& way, unsigned int threads) {
                           const Spread time =
                               spreadOver(pairs, [&](const std::string& pair) { return together(pair, way, threads); });
                           return write(1000 / time.mean) + " (" + write(scale(pairs, way, 1, threads).mean) + ")";
                       });
    }

    // Processor time does not grow if threads do not hinder each other, even on a busy machine.
    void printProcessorTime() const {
        printByThreads("Processor time per point of all threads, ratio to one thread", WAYS_ON_THREADS,
                       [this](const Way& way, unsigned int threads) {
                           return write(spreadOver(pairs, [&](const std::string& pair) {
                                            return counterOf(nameOf(pair, way), nameOfProcessorTime(threads, 1));
                                        }).mean);
                       });
    }

    void printRequests() const {
        printByThreads("Six pairs in turn: million points per second, and ratio to one thread",
                       {POINT_TRANSFORMER, REQUEST, REQUEST_OF_100, REQUEST_OF_10},
                       [this](const Way& way, unsigned int threads) {
                           return write(1000 / together(ALL_PAIRS, way, threads)) + " (" +
                                  write(scale({ALL_PAIRS}, way, 1, threads).mean) + ")";
                       });
        printByThreads(
            "Construction and destruction of a PointTransformer: ns of wall time", {CONSTRUCTION},
            [this](const Way& way, unsigned int threads) { return write(together(ALL_PAIRS, way, threads), "%.0f"); });
    }

    // The model counts the longest measured time of construction as time under the lock.
    void printModel() const {
        double locked = 0;
        for (const unsigned int threads : TEAMS) locked = std::max(locked, together(ALL_PAIRS, CONSTRUCTION, threads));
        const double point = together(ALL_PAIRS, POINT_TRANSFORMER, 1);
        MarkdownTable table({"cores and threads", "share of time under a lock", "2", "8", "16", "32", "64"});
        for (const int size : {10, 100, 1000}) {
            MarkdownTable::Row row{"a request of " + std::to_string(size) + " points",
                                   write(100 * locked / (size * point + locked), "%.2f") + " %"};
            for (const unsigned int threads : {2U, 8U, 16U, 32U, 64U})
                row.push_back(write(modelSpeedUp(threads, size * point, locked), "%.1f"));
            table.add(row);
        }
        table.print("Model: points per second, ratio to one thread");
    }

    const std::vector<std::string> pairs;
};
