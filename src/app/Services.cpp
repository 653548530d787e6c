// SPDX-License-Identifier: MIT
#include "Services.h"

#include "ModelContainer.h"
#include "SignedFeed.h"
#include "SystemPackages.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace
{

FeedSource feedSource(const AppInfo &info)
{
    FeedSource source{
        info.endpoint(u"UpdateFeed"_s), {}, ModelContainer::defaultFolder() + u"/update-sequence"};
    const QByteArray keys = info.value(u"UpdateKeys"_s).value_or(QString()).toLatin1();
    for (const QByteArray &text : keys.simplified().split(' ')) {
        if (const auto key = MinisignKey::parse(text))
            source.keys.append(*key);
    }
    return source;
}

std::unique_ptr<UpdateController> makeUpdateController(const AppInfo &info, HttpClient &http,
                                                       Clock &clock)
{
    if (!info.value(u"UpdateFeed"_s))
        return std::make_unique<SystemPackages>();
    const auto current = QVersionNumber::fromString(QLatin1StringView(STRANDLOOM_VERSION));
    return std::make_unique<SignedFeed>(http, clock, feedSource(info), current);
}

} // namespace

Services::Services(ModelContext &modelContext, Clock &clock)
    : modelContext(modelContext)
    , clock(clock)
    , updateController(makeUpdateController(info, http, clock))
    , loginItem(QCoreApplication::applicationFilePath())
{
    pages.setMaxThreadCount(1);
}
