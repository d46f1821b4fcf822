#include "QuorvaneCore/index/SQLiteError.h"

namespace quorvane {
namespace {

std::string prefix(SQLiteError::Kind kind) {
    switch (kind) {
        case SQLiteError::Kind::Open: return "sqlite open: ";
        case SQLiteError::Kind::Prepare: return "sqlite prepare: ";
        case SQLiteError::Kind::Step: return "sqlite step: ";
    }
    return {};
}

}  // namespace

SQLiteError::SQLiteError(Kind kind, const std::string& message)
    : std::runtime_error{prefix(kind) + message}, kind_{kind}, message_{message} {}

}  // namespace quorvane
