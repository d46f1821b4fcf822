#pragma once
#include <memory>
#include <type_traits>
#include <utility>

namespace quorvane {

template <typename Signature>
class FunctionView;

/// A reference to a callable, for parameters only: it owns nothing, never allocates, and must not outlive the call.
template <typename Result, typename... Arguments>
class FunctionView<Result(Arguments...)> {
public:
    template <typename Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, FunctionView> &&
             std::is_invocable_r_v<Result, Callable&, Arguments...>) FunctionView(Callable&& callable)
    noexcept  // NOLINT(bugprone-forwarding-reference-overload): constrained above
        : target_{const_cast<void*>(static_cast<const void*>(std::addressof(callable)))},
          call_{[](void* target, Arguments... arguments) -> Result {
              return (*static_cast<std::remove_reference_t<Callable>*>(target))(std::forward<Arguments>(arguments)...);
          }} {}

    Result operator()(Arguments... arguments) const { return call_(target_, std::forward<Arguments>(arguments)...); }

private:
    void* target_;
    Result (*call_)(void*, Arguments...);
};

}  // namespace quorvane
