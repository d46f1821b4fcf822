#include "benchmarks/support/RefreshProcess.h"

#include <sstream>
#include <stdexcept>

#include "benchmarks/support/Process.h"

namespace quorvane::benchmarks {

RefreshProcess RefreshProcess::run(const std::string& root, const std::string& database, const std::string& agent) {
    const ProcessResult process = runProcess({QUORVANE_REFRESH_ONCE, agent, root, database});
    std::istringstream numbers{process.output};
    RefreshProcess result;
    numbers >> result.timing.seconds >> result.timing.cpuSeconds >> result.peakKibibytes >> result.filesRead >>
        result.filesSkipped >> result.events;
    if (!process.isSuccess || !numbers) throw std::runtime_error{"refresh_once failed"};
    return result;
}

}  // namespace quorvane::benchmarks
