// Started by the bar in place of the login shell ("bench_stamp -lc FILE"): writes the time it started, in
// milliseconds on the monotonic clock, into FILE. Only the C library, so that little runs before main.

#include <cstdio>
#include <ctime>

int main(int argc, char** argv)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (argc < 3)
        return 2;
    FILE* file = std::fopen(argv[2], "w");
    if (!file)
        return 1;
    std::fprintf(file, "%.3f\n", double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6);
    return std::fclose(file) == 0 ? 0 : 1;
}
