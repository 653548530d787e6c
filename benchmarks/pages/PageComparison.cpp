// SPDX-License-Identifier: MIT
#include "PageComparison.h"

#include "PageEvidence.h"
#include "PageMaker.h"
#include "PageTitle.h"
#include "ReferencePacket.h"
#include "ReferenceTitle.h"
#include "Utf8.h"

using namespace Qt::StringLiterals;

namespace
{

/// Of small pages, so that few edits leave little as it was; of every other one only the head.
std::string mutatedPage(PageMaker &maker, int number)
{
    std::string page = maker.page(500 + 25 * (number % 100));
    if (number % 2 == 1)
        page.resize(page.find("<script"));
    return maker.mutated(std::move(page));
}

} // namespace

std::optional<std::string> firstDifference(unsigned seed, int count)
{
    const QString address = u"https://www.example.org"_s;
    PageMaker maker(seed);
    for (int number = 0; number < count; ++number) {
        const std::string html = mutatedPage(maker, number);
        const QString text = readUtf8(html);
        const std::string title = extractTitle(html).value_or(std::string());
        const std::string expectedTitle = referenceTitle(text).toStdString();
        if (title != expectedTitle)
            return html + "\n\n" + title + "\n\n" + expectedTitle;
        const EvidencePacket packet = parsePacket(html, address, {});
        const EvidencePacket expected = referencePacket(text, address, {});
        if (packet != expected)
            return html + "\n\n" + packet.toJson().toStdString() + "\n\n"
                + expected.toJson().toStdString();
    }
    return std::nullopt;
}
