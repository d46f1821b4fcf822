// Prints which bundle, or which resource of it, is found from where this program lies and from how it was started:
//   bundle_finder NAME [RESOURCE EXTENSION] [ANYTHING…]
// A line with the path, empty if there is none, then the number of walks that took.
#include <cstdio>

#include "QuorvaneCore/model/QuorvaneResourceBundle.h"

int main(int count, char** arguments) {
    using quorvane::QuorvaneResourceBundle;
    if (count < 2) return 2;
    const std::optional<std::string> found =
        count < 4 ? QuorvaneResourceBundle::bundle(arguments[1])
                  : QuorvaneResourceBundle::url(arguments[2], arguments[3], arguments[1]);
    std::printf("%s\n%lld\n", found.value_or("").c_str(),
                static_cast<long long>(QuorvaneResourceBundle::candidateWalkCount()));
    return 0;
}
