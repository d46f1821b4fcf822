// Prints what this program sees of itself: the executable, then its arguments, one a line.
#include <cstdio>

#include "QuorvaneCore/platform/ProgramImages.h"

int main() {
    std::printf("%s\n", quorvane::ProgramImages::executable().c_str());
    for (const std::string& argument : quorvane::ProgramImages::arguments())
        std::printf("<%s>\n", argument.c_str());
    return 0;
}
