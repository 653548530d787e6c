// SPDX-License-Identifier: MIT
#include "Demand.h"
#include "PageText.h"
#include "PageTitle.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const std::string html = decodePage(QByteArrayView(data, size), BodyEnd::truncated);
    const auto title = extractTitle(html);
    demand(!title || (!title->empty() && title->size() <= html.size()));
    return 0;
}
