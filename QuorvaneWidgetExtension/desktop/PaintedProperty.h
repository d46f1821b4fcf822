#pragma once
#include <QQuickPaintedItem>

namespace quorvane::desktop {

/// For the setters of items that paint themselves: one whose property becomes another value paints itself anew.
template <typename Item, typename Value>
void setPainted(Item& item, Value& kept, const Value& value) {
    if (value == kept) return;
    kept = value;
    item.update();
    Q_EMIT item.changed();
}

}  // namespace quorvane::desktop
