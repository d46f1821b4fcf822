#pragma once
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "QuorvaneCore/model/IndexableProvider.h"

namespace quorvane::host {

/// A bar on standard error while a refresh runs, with bytes and files; nothing where that is no terminal, and nothing
/// for a refresh that is done in an instant. The bar is wiped at the end.
class RefreshProgress {
public:
    RefreshProgress();
    RefreshProgress(const RefreshProgress&) = delete;
    RefreshProgress& operator=(const RefreshProgress&) = delete;
    ~RefreshProgress();

    /// A reader that decodes as `reader` does and reports what it decodes here. `reader` and this must outlive it.
    [[nodiscard]] std::unique_ptr<IndexableProvider> observing(const IndexableProvider& reader);

private:
    class Observer;
    void draw();
    void run();

    std::atomic<std::int64_t> bytesRead_{0};
    std::atomic<std::int64_t> filesRead_{0};
    std::atomic<std::int64_t> filesKnown_{0};

    /// Guards `isDone_`; a leaf.
    std::mutex lock_;
    std::condition_variable wake_;
    bool isDone_ = false;
    bool wasDrawn_ = false;  ///< the drawing thread's own
    std::thread thread_;     ///< only where there is a terminal
};

}  // namespace quorvane::host
