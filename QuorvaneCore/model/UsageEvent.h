#pragma once
#include <optional>
#include <string>

#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/model/TokenUsage.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// One model call, with its tokens and without money: calls are priced when they are read.
/// Events have no equality and no order of their own; two are compared through their `DedupKey`.
struct UsageEvent {
    std::string messageId;               ///< the provider's identity of the message
    std::string requestId;               ///< the provider's identity of the request; empty where it has none
    ProviderID provider{};               ///< who produced it
    std::string model;                   ///< as the log names it
    Date timestamp;                      ///< when the call happened
    TokenUsage usage;                    ///< its tokens
    std::optional<std::string> project;  ///< the project the call belongs to

    /// The identity in lists of a user interface: message, colon, request.
    [[nodiscard]] std::string id() const { return messageId + ":" + requestId; }
};

}  // namespace quorvane
