#include "QuorvaneHost/Session.h"

#include <system_error>

#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/pricing/RemotePricingStore.h"
#include "QuorvaneHost/Failure.h"

namespace quorvane::host {

std::shared_ptr<UsageIndex> openIndex() {
    std::string path = FilePath::joining(UserFolders::quorvaneSupport(), "usage.sqlite");
    try {
        path = UsageIndex::defaultURL();
        return std::make_shared<UsageIndex>(path);
    } catch (const SQLiteError& error) {
        throw Failure{path + ": " + error.what()};
    } catch (const std::system_error& error) {
        throw Failure{error.what()};
    }
}

CostCalculator currentPrices() {
    return CostCalculator{RemotePricingStore{RemotePricingStore::defaultRemoteURL()}.resolvedTable()};
}

}  // namespace quorvane::host
