// SPDX-License-Identifier: MIT
#include "Characters.h"
#include "Demand.h"
#include "MainText.h"
#include "PageEvidence.h"
#include "PageText.h"
#include "SummaryText.h"
#include "Utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const std::string html = decodePage(QByteArrayView(data, size), BodyEnd::complete);
    const EvidencePacket packet = parsePacket(html, QStringLiteral("https://example.org"), {});
    demand(packet.headings.size() <= 5 && packet.navLabels.size() <= 8);
    demand(packet.ctaButtons.size() <= 5 && packet.pricingText.size() <= 3);
    demand(hasFewerCharacters(QStringView(packet.extractedText), 1501));
    demand(packet.pageType && EvidencePacket::fromJson(packet.toJson()) == packet);
    demand(readUtf8(mainText(html, 7)) == packet.extractedText);
    demand(!composeSummary(packet).isEmpty());
    return 0;
}
