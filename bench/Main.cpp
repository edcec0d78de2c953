#include <benchmark/benchmark.h>

#include <malloc.h>

int main(int argc, char** argv) {
    // Freed memory stays with the process, so that a benchmark finds the heap as warm as the
    // one before it left it: otherwise glibc hands large blocks back to the system and, by the
    // order the benchmarks run in, a load pays the page faults of its memory again, at up to
    // ten times its own cost on a virtual machine.
    mallopt(M_MMAP_THRESHOLD, 256 << 20);
    mallopt(M_TRIM_THRESHOLD, 512 << 20);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
