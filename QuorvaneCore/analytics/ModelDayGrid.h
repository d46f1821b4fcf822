#pragma once
#include <string>
#include <vector>

#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane {

/// The top models by day.
struct ModelDayGrid {
    struct Row {
        ProviderID provider{};
        std::string model;
        double total = 0;  ///< over the window

        /// The provider's raw name, "::" and the model.
        [[nodiscard]] std::string id() const;

        friend bool operator==(const Row&, const Row&) = default;
    };

    std::vector<Row> rows;                    ///< the largest total first
    std::vector<Date> days;                   ///< the columns, the oldest first
    std::vector<std::vector<double>> values;  ///< `values[i][j]`: row i on day j

    friend bool operator==(const ModelDayGrid&, const ModelDayGrid&) = default;
};

}  // namespace quorvane
