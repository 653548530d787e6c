// SPDX-License-Identifier: MIT
#include "Demand.h"
#include "PageText.h"

#include <QUtf8StringView>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const QByteArrayView body(data, size);
    for (const BodyEnd end : {BodyEnd::complete, BodyEnd::truncated}) {
        const std::string text = decodePage(body, end);
        demand(QUtf8StringView(text.data(), text.size()).isValidUtf8());
        demand(text.size() + 6 >= size && text.size() <= 2 * size);
    }
    return 0;
}
