// SPDX-License-Identifier: MIT
#pragma once

#include <random>
#include <string>

/// Makes web pages in UTF-8; the same seed makes the same pages.
class PageMaker
{
public:
    explicit PageMaker(unsigned seed)
        : m_random(seed)
    {
    }

    /// A page of at least `size` bytes as sites write them: a head with its meta elements, scripts
    /// and styles, then navigation, articles with links and pictures, prices and a footer.
    std::string page(std::size_t size);
    /// `page` after a few edits: parts cut out, doubled or moved, other case, and pieces put in
    /// that matter to whoever reads titles, descriptions and text.
    std::string mutated(std::string page);

private:
    std::size_t below(std::size_t bound) { return m_random() % bound; }
    bool chance(unsigned percent) { return below(100) < percent; }
    std::string words(std::size_t count);
    std::string head();
    std::string script(std::size_t size);
    std::string navigation();
    std::string article();
    /// Between two characters, within the given bytes.
    std::size_t boundaryIn(const std::string &page, std::size_t begin, std::size_t end);

    std::mt19937 m_random;
};
