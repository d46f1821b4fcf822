#include "QuorvaneCore/platform/JSONWriter.h"

#include <cmath>

#include <nlohmann/json.hpp>

namespace quorvane {
namespace {

nlohmann::json toLibrary(const JSONTree& tree);

struct ToLibrary {
    nlohmann::json operator()(std::nullptr_t) const { return nullptr; }
    nlohmann::json operator()(bool value) const { return value; }
    nlohmann::json operator()(std::int64_t value) const { return value; }
    nlohmann::json operator()(std::uint64_t value) const { return value; }
    nlohmann::json operator()(double value) const {
        constexpr double exactIntegers = 9007199254740992.0;  // 2^53
        const bool whole = std::trunc(value) == value && std::fabs(value) <= exactIntegers;
        return whole ? nlohmann::json(static_cast<std::int64_t>(value)) : nlohmann::json(value);
    }
    nlohmann::json operator()(const std::string& value) const { return value; }
    nlohmann::json operator()(const JSONTree::Array& elements) const {
        nlohmann::json array = nlohmann::json::array();
        for (const JSONTree& element : elements)
            array.push_back(toLibrary(element));
        return array;
    }
    nlohmann::json operator()(const JSONTree::Object& members) const {
        nlohmann::json object = nlohmann::json::object();
        for (const auto& [key, value] : members)
            object[key] = toLibrary(value);
        return object;
    }
};

nlohmann::json toLibrary(const JSONTree& tree) {
    return std::visit(ToLibrary{}, tree.content);
}

std::string dump(const JSONTree& tree, int indentation) {
    return toLibrary(tree).dump(indentation, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

std::string JSONWriter::pretty(const JSONTree& tree) {
    return dump(tree, 2);
}

std::string JSONWriter::compact(const JSONTree& tree) {
    return dump(tree, -1);
}

}  // namespace quorvane
