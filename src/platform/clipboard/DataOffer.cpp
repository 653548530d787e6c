// SPDX-License-Identifier: MIT
#include "DataOffer.h"

#include "DebugLog.h"

#include <QString>

#include <array>
#include <cerrno>
#include <cstring>
#include <data-control-client-header.h>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

struct DataOfferEvents {
    static constexpr qsizetype maxTypes = 256;

    static constexpr ext_data_control_offer_v1_listener listener = {
        [](void *data, ext_data_control_offer_v1 *, const char *type) {
            auto &types = static_cast<DataOffer *>(data)->m_types;
            if (types.size() < maxTypes)
                types.append(type);
        },
    };
};

DataOffer::DataOffer(ext_data_control_offer_v1 *offer)
    : m_offer(offer)
{
    ext_data_control_offer_v1_add_listener(offer, &DataOfferEvents::listener, this);
}

std::optional<int> DataOffer::receive(const QByteArray &type) const
{
    std::array<int, 2> ends;
    if (pipe2(ends.data(), O_CLOEXEC) < 0) {
        debugLog(u"No pipe for reading the clipboard: "_s
                 + QString::fromLocal8Bit(std::strerror(errno)));
        return {};
    }
    fcntl(ends[0], F_SETFL, O_NONBLOCK); // the writer does not expect its own end to be so
    ext_data_control_offer_v1_receive(m_offer.get(), type.constData(), ends[1]);
    ::close(ends[1]); // the request holds a copy
    return ends[0];
}
