// What can go wrong between a client and the service: results, not exceptions.
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace IpodControl {

enum class ProblemKind {
    NoConnection,   ///< nobody listens there, or the name means nothing
    Closed,         ///< the other side ended the connection
    TimedOut,       ///< nothing came in time
    NotTheService,  ///< what came is no JSON-RPC
};

struct Problem {
    ProblemKind kind = ProblemKind::Closed;
    std::string text;  ///< one sentence for a person, without a line end
};

/// A value, or why there is none.
template <typename T>
class [[nodiscard]] Outcome {
  public:
    // NOLINTNEXTLINE(google-explicit-constructor): returned as the value that it is
    Outcome(T value) : m_content(std::in_place_index<0>, std::move(value)) {}
    // NOLINTNEXTLINE(google-explicit-constructor)
    Outcome(Problem problem) : m_content(std::in_place_index<1>, std::move(problem)) {}

    explicit operator bool() const { return m_content.index() == 0; }
    T& operator*() { return std::get<0>(m_content); }
    const T& operator*() const { return std::get<0>(m_content); }
    T* operator->() { return &std::get<0>(m_content); }
    const T* operator->() const { return &std::get<0>(m_content); }
    /// Only of an outcome without a value.
    const Problem& Why() const { return std::get<1>(m_content); }

  private:
    std::variant<T, Problem> m_content;
};

/// For what has nothing to give back.
struct Done {};

}  // namespace IpodControl
