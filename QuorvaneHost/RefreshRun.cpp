#include "QuorvaneHost/RefreshRun.h"

#include <future>
#include <optional>
#include <string>

#include "QuorvaneHost/Failure.h"
#include "QuorvaneHost/RefreshLock.h"
#include "QuorvaneHost/RefreshProgress.h"

namespace quorvane::host {

std::vector<RefreshedReader> refreshAll(const std::shared_ptr<UsageIndex>& index, std::span<const Reader> readers) {
    const RefreshLock lock{index->path()};
    RefreshProgress progress;
    std::vector<std::unique_ptr<IndexableProvider>> observed;
    std::vector<std::future<UsageIndexer::Stats>> running;
    for (const Reader& reader : readers) {
        observed.push_back(progress.observing(*reader));
        running.push_back(std::async(std::launch::async, [index, provider = observed.back().get()] {
            return UsageIndexer{index}.refresh(*provider);
        }));
    }
    std::vector<RefreshedReader> refreshed;
    std::optional<std::string> failure;
    for (std::size_t place = 0; place < readers.size(); ++place) {
        RefreshedReader reader{.id = readers[place]->id(), .isAvailable = readers[place]->isAvailable(), .stats = {}};
        try {
            reader.stats = running[place].get();
        } catch (const SQLiteError& error) {
            if (!failure) failure = index->path() + ": " + error.what();
        }
        refreshed.push_back(reader);
    }
    if (failure) throw Failure{*failure};
    return refreshed;
}

}  // namespace quorvane::host
