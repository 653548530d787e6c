// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QTest>

#include <initializer_list>
#include <tuple>
#include <vector>

/// The cases of a test that differ only in their data, for one loop over their columns. The loop
/// ends with the first case in which a check fails, and the name of that row is told.
template <typename... Columns>
class Rows
{
public:
    struct Row {
        Row(QByteArray rowName, Columns... values)
            : name(std::move(rowName))
            , columns(std::move(values)...)
        {
        }
        /// Columns left out at the end have the value that their type begins with.
        template <typename... Values>
        requires(sizeof...(Values) < sizeof...(Columns)) Row(QByteArray rowName, Values... values)
            : name(std::move(rowName))
        {
            assign(std::forward_as_tuple(values...), std::index_sequence_for<Values...>());
        }
        QByteArray name;
        std::tuple<Columns...> columns;

    private:
        template <typename Values, std::size_t... places>
        void assign(const Values &values, std::index_sequence<places...>)
        {
            ((std::get<places>(columns) = std::get<places>(values)), ...);
        }
    };
    struct Iterator {
        const Rows &rows;
        const std::tuple<Columns...> &operator*() const { return rows.current().columns; }
        void operator++() const { rows.goOn(); }
        bool operator!=(const Iterator &) const { return !rows.isAtEnd(); }
    };

    Rows(std::initializer_list<Row> rows)
        : m_rows(rows)
    {
    }
    Rows(const Rows &) = delete;
    Rows &operator=(const Rows &) = delete;
    ~Rows()
    {
        if (QTest::currentTestFailed() && m_current < m_rows.size())
            qInfo("in the row \"%s\"", current().name.constData());
    }

    void add(Row row) { m_rows.push_back(std::move(row)); }
    Iterator begin() const { return {*this}; }
    Iterator end() const { return {*this}; }

private:
    const Row &current() const { return m_rows[m_current]; }
    void goOn() const { m_current += QTest::currentTestFailed() ? 0 : 1; }
    bool isAtEnd() const { return m_current == m_rows.size() || QTest::currentTestFailed(); }

    std::vector<Row> m_rows;
    mutable std::size_t m_current = 0;
};
