#include <fmt/format.h>

#include "QuorvaneHost/html/Sections.h"

namespace quorvane::host {

std::string sectionFrame(const std::string& id, const std::string& title, const std::string& side,
                         const std::string& main) {
    return fmt::format(
        "<section id=\"{0}\" aria-labelledby=\"{0}-title\">\n<div class=\"side\"><h2 id=\"{0}-title\">{1}</h2>\n{2}"
        "</div>\n<div class=\"main\">\n{3}</div>\n</section>\n",
        id, title, side, main);
}

std::string foldedTable(const std::string& summary, const std::string& table) {
    return fmt::format(
        "<details><summary>{0}</summary>\n<div class=\"scroll\" role=\"region\" aria-label=\"{0}\" tabindex=\"0\">\n"
        "{1}</div></details>\n",
        summary, table);
}

}  // namespace quorvane::host
