// qwixtd_micro [OPTION...]: small parts of the daemon, each for itself. The options are Google Benchmark's.

#include "measures.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    benchmark::Initialize(&argc, argv);
    const QCoreApplication application(argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    try {
        benchmark::RunSpecifiedBenchmarks();
    } catch (const CannotMeasure &failure) {
        std::fprintf(stderr, "micro: %s\n", failure.what());
        return 1;
    }
    return 0;
}
