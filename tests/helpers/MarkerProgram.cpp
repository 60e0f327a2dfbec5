// A program that only leaves a trace: run, it writes "ran" into a file named after itself with ".ran"
// added, so that a test sees whether anything started it. Plain C++, so that it stays runnable at mode
// --x--x--x, where nothing may read it.

#include <climits>
#include <fstream>
#include <string>
#include <unistd.h>

int main()
{
    char self[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0)
        return 1;
    std::ofstream(std::string(self, std::size_t(length)) + ".ran") << "ran\n";
    return 0;
}
