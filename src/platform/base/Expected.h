// SPDX-License-Identifier: MIT
#pragma once

#include <utility>
#include <variant>

/// The reason to return where an `Expected` was promised: `return Unexpected{reason};`
template <typename E>
struct Unexpected {
    E error;
};

template <typename E>
Unexpected(E) -> Unexpected<E>;

/// A value, or the reason why there is none. Reading the one that is not there is a mistake of the
/// caller.
template <typename T, typename E>
class [[nodiscard]] Expected
{
public:
    Expected(T value)
        : m_content(std::in_place_index<0>, std::move(value))
    {
    }
    Expected(Unexpected<E> reason)
        : m_content(std::in_place_index<1>, std::move(reason.error))
    {
    }

    explicit operator bool() const { return m_content.index() == 0; }
    T &operator*() & { return *std::get_if<0>(&m_content); }
    const T &operator*() const & { return *std::get_if<0>(&m_content); }
    T &&operator*() && { return std::move(*std::get_if<0>(&m_content)); }
    T *operator->() { return std::get_if<0>(&m_content); }
    const T *operator->() const { return std::get_if<0>(&m_content); }
    const E &error() const { return *std::get_if<1>(&m_content); }

private:
    std::variant<T, E> m_content;
};

template <typename E>
class [[nodiscard]] Expected<void, E> : public Expected<std::monostate, E>
{
public:
    Expected()
        : Expected<std::monostate, E>(std::monostate())
    {
    }
    Expected(Unexpected<E> reason)
        : Expected<std::monostate, E>(std::move(reason))
    {
    }
};
