// A reference to something that can be called, for parameters: no memory is taken to pass it on.
#pragma once

#include <memory>
#include <utility>

namespace TAVIK::detail {

template <class Signature> class FunctionRef;

/// Refers to a function object, which must last as long as the reference is used.
template <class Result, class... Args> class FunctionRef<Result(Args...)> {
public:
    /// Any callable; not explicit, for it is an argument.
    template <class F>
    FunctionRef(const F& callable) noexcept // NOLINT(google-explicit-constructor)
        : m_object(std::addressof(callable)), m_call([](const void* object, Args... args) {
              return Result((*static_cast<const F*>(object))(std::forward<Args>(args)...));
          }) {}

    Result operator()(Args... args) const { return m_call(m_object, std::forward<Args>(args)...); }

private:
    const void* m_object;
    Result (*m_call)(const void*, Args...);
};

} // namespace TAVIK::detail
