#include <map>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/platform/JSONWriter.h"
#include "QuorvaneCore/pricing/RemotePricingStore.h"
#include "QuorvaneHost/Failure.h"
#include "QuorvaneHost/Output.h"
#include "QuorvaneHost/PriceListRefresh.h"
#include "QuorvaneHost/Session.h"
#include "QuorvaneHost/commands/Command.h"
#include "QuorvaneHost/text/Cells.h"
#include "QuorvaneHost/text/Table.h"
#include "QuorvaneHost/text/Terminal.h"

namespace quorvane::host {
namespace {

struct Options {
    std::vector<std::string> models;
    bool json = false;
};

/// By the identifier that the user or the price list names.
using Prices = std::map<std::string, ModelPrice>;

/// The price list's own keys, so that the output can be read as a list again.
JSONTree::Object priceJSON(const ModelPrice& price) {
    JSONTree::Object object{{"input_cost_per_token", price.inputCostPerToken},
                            {"output_cost_per_token", price.outputCostPerToken}};
    const auto add = [&](const char* key, std::optional<double> value) {
        if (value) object.emplace(key, *value);
    };
    add("cache_creation_input_token_cost", price.cacheCreationInputTokenCost);
    add("cache_creation_input_token_cost_above_1hr", price.cacheCreationInputTokenCostAbove1hr);
    add("cache_read_input_token_cost", price.cacheReadInputTokenCost);
    add("input_cost_per_token_above_200k_tokens", price.inputCostPerTokenAbove200k);
    add("output_cost_per_token_above_200k_tokens", price.outputCostPerTokenAbove200k);
    add("cache_creation_input_token_cost_above_200k_tokens", price.cacheCreationInputTokenCostAbove200k);
    add("cache_creation_input_token_cost_above_1hr_above_200k_tokens",
        price.cacheCreationInputTokenCostAbove1hrAbove200k);
    add("cache_read_input_token_cost_above_200k_tokens", price.cacheReadInputTokenCostAbove200k);
    return object;
}

/// Which list a price comes from.
class Origins {
public:
    Origins()
        : fetched_{RemotePricingStore{RemotePricingStore::defaultRemoteURL()}.cachedModels().value_or(
              PricingTable::Models{})} {}

    /// "fetched" or "built-in".
    [[nodiscard]] std::string of(const std::string& model) const {
        const bool isFetched = fetched_.contains(listed(model));
        return isFetched ? "fetched" : "built-in";
    }

private:
    /// The identifier that the table finds for a model: its own, where any list has it.
    [[nodiscard]] std::string listed(const std::string& model) const {
        if (fetched_.contains(model) || shipped_.models().contains(model)) return model;
        return PricingTable::normalizedModelID(model).value_or(model);
    }

    PricingTable::Models fetched_;
    PricingTable shipped_ = PricingTable::bundledDefault();
};

std::string asJSON(const Prices& prices, const Origins& origins) {
    JSONTree::Object models;
    JSONTree::Object sources;
    for (const auto& [model, price] : prices) {
        models.emplace(model, priceJSON(price));
        sources.emplace(model, origins.of(model));
    }
    return JSONWriter::pretty(JSONTree::Object{{"models", std::move(models)}, {"sources", std::move(sources)}});
}

/// What a million tokens of one kind cost: the calculator's own answer, derived rates included.
std::string perMillion(const CostCalculator& calculator, const std::string& model, const TokenUsage& million,
                       bool isLong) {
    return fmt::format("{:.2f}", calculator.cost(model, million, isLong).value_or(0));
}

std::vector<std::string> rates(const CostCalculator& calculator, const std::string& model, std::string label,
                               bool isLong, std::string origin) {
    constexpr std::int64_t million = 1000000;
    return {std::move(label),
            perMillion(calculator, model, {.input = million}, isLong),
            perMillion(calculator, model, {.output = million}, isLong),
            perMillion(calculator, model, {.cacheCreate5m = million}, isLong),
            perMillion(calculator, model, {.cacheCreate1h = million}, isLong),
            perMillion(calculator, model, {.cacheRead = million}, isLong),
            std::move(origin)};
}

std::string asTable(const Prices& prices, const CostCalculator& calculator, const Origins& origins) {
    Table table{{"US$ per million tokens", "Input", "Output", "Write 5m", "Write 1h", "Read", "List"}};
    for (const auto& [model, price] : prices) {
        table.add(rates(calculator, model, printable(model), false, origins.of(model)));
        if (price.inputCostPerTokenAbove200k) {
            table.add(rates(calculator, model, "  calls above 200K input", true, ""));
        }
    }
    const Terminal terminal{Terminal::Stream::Output};
    return table.text(Ink{terminal.hasColour()}, terminal.width(), 0);
}

int runPrices(const Options& options) {
    const CostCalculator calculator = currentPrices();
    if (calculator.pricing().models().empty()) throw Failure{"the price list that belongs to the program is missing"};
    Prices prices;
    std::string unpriced;
    if (options.models.empty())
        prices.insert(calculator.pricing().models().begin(), calculator.pricing().models().end());
    for (const std::string& model : options.models) {
        if (const std::optional<ModelPrice> price = calculator.pricing().price(model)) {
            prices.emplace(model, *price);
        } else {
            unpriced += (unpriced.empty() ? "" : ", ") + model;
        }
    }
    if (options.json || !prices.empty()) {
        const Origins origins;
        print(options.json ? asJSON(prices, origins) : asTable(prices, calculator, origins));
    }
    if (!unpriced.empty()) throw Failure{"no price for " + printable(unpriced)};
    return 0;
}

int runPricesRefresh(const std::string& url) {
    print(refreshPriceList(url));
    return 0;
}

}  // namespace

void addPricesCommand(CLI::App& parser, ChosenCommand& chosen) {
    CLI::App* command = parser.add_subcommand("prices", "The prices in force, of all models or of those named");
    const auto options = std::make_shared<Options>();
    command->add_option("MODEL", options->models, "A model, as the logs name it")->type_name("");
    addJSONOption(*command, options->json);
    command->callback([options, &chosen] {
        if (!chosen) chosen = [options] { return runPrices(*options); };
    });

    CLI::App* refresh = command->add_subcommand("refresh", "Fetch the price list anew, if it has changed");
    const auto url = std::make_shared<std::string>(RemotePricingStore::defaultRemoteURL());
    refresh->add_option("--url", *url, "The list's address")->type_name("URL");
    refresh->callback([url, &chosen] { chosen = [url] { return runPricesRefresh(*url); }; });
}

}  // namespace quorvane::host
