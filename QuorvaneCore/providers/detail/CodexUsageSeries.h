#pragma once
// Not installed: how the Codex reader turns a running total into calls.
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// The tokens of a session so far, as a rollout tells them.
struct CodexTotals {
    std::int64_t input = 0;   ///< cached input included
    std::int64_t cached = 0;  ///< of these, read from the cache
    std::int64_t output = 0;
};

/// Turns the running totals of one session into calls. What the total rises by is a call. What it falls by is taken
/// back from the newest calls, and a call that has nothing left is gone; a fall below half begins a new series, on top
/// of the calls so far. So the calls add up to what stands, and the number of a call is never used again. Arithmetic is
/// checked. Each total costs the same however many came before, and a call is kept in a few dozen bytes until it is
/// asked for. One thread at a time.
class CodexUsageSeries {
public:
    /// The project of the calls from here on.
    void setProject(std::string_view project);

    /// The model of the calls from here on, and of those so far if none was known. `model` is not empty.
    void setModel(std::string_view model);

    [[nodiscard]] bool knowsModel() const noexcept { return knowsModel_; }

    /// Takes the next total. `date` is that of the call, if it is one.
    void take(const CodexTotals& totals, Date date);

    /// The calls that stand, in the order of their numbers.
    [[nodiscard]] std::vector<UsageEvent> events(const std::string& messageId) const;

private:
    enum Bucket : std::size_t { Input, Cached, Output, bucketCount };  ///< uncached input, cached input, output
    using Amounts = std::array<std::int64_t, bucketCount>;

    /// One call. Its place in the list is its number, so it stays there when nothing is left of it.
    struct Call {
        Date date;
        Amounts amounts{};
        std::uint32_t model = 0;    ///< place in the list of models
        std::uint32_t project = 0;  ///< place in the list of projects
    };

    /// A name that changes now and then, kept once for all calls in a row that have it.
    template <typename Name>
    class Names {
    public:
        void change(Name name) {
            if (name == names_.back()) return;
            if (isUsed_) names_.emplace_back();
            isUsed_ = false;
            names_.back() = std::move(name);
        }
        void replaceFirst(Name name) { names_.front() = std::move(name); }
        /// The place of the present name, for good.
        [[nodiscard]] std::uint32_t use() noexcept {
            isUsed_ = true;
            return static_cast<std::uint32_t>(names_.size() - 1);
        }
        [[nodiscard]] const Name& at(std::uint32_t place) const { return names_[place]; }

    private:
        std::vector<Name> names_{Name{}};
        bool isUsed_ = false;
    };

    void takeBack(Bucket bucket, std::int64_t amount);
    void add(const Amounts& amounts, Date date);

    std::vector<Call> calls_;
    std::array<std::vector<std::uint32_t>, bucketCount> filled_;  ///< the calls with a bucket above 0, oldest first
    Names<std::string> models_;
    Names<std::optional<std::string>> projects_;
    bool knowsModel_ = false;
    std::optional<CodexTotals> previous_;
    Amounts emitted_{};  ///< what the calls of this series add up to
};

}  // namespace quorvane
