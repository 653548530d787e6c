// SPDX-License-Identifier: MIT
#include "ManyLinks.h"

#include <array>
#include <random>

using namespace Qt::StringLiterals;

namespace
{

struct Script {
    int share; ///< of a hundred links
    const char *words;
};

constexpr std::array scripts{
    Script{62,
           "the field guide to efficient office work how small teams plan release notes review "
           "of a quiet laptop open source weather maps for walkers price list autumn"},
    Script{8, "Überblick über schöne Straßen in Köln été à Genève où l’on façonne señal mañana"},
    Script{6, "краткое руководство по работе с письмами новости погода и карты дорог"},
    Script{6, "今日の東京 天気予報 新しい 使い方 手引き 中文 网页 摘要 简短 说明"},
    Script{4, "짧은 안내서 오늘의 날씨 새로운 소식 길 찾기 지도"},
    Script{4, "دليل قصير إلى العمل الهادئ أخبار الطقس خرائط الطرق"},
    Script{3, "מדריך קצר לעבודה שקטה חדשות מזג אוויר ומפות"},
    Script{3, "छोटी मार्गदर्शिका आज का मौसम नए समाचार और नक्शे"},
    Script{2, "คู่มือ สั้น พยากรณ์ อากาศ วันนี้ ข่าว ใหม่"},
    Script{2, "σύντομος οδηγός για ήσυχη εργασία νέα του καιρού"},
};

using Random = std::mt19937;

int upTo(Random &random, int limit)
{
    return int(random() % unsigned(limit)); // the same with every library
}

QString text(Random &random, const QStringList &words, int count)
{
    QStringList chosen;
    for (int i = 0; i < count; ++i)
        chosen.append(words[upTo(random, int(words.size()))]);
    return chosen.join(u' ');
}

QStringList wordsOfSomeScript(Random &random)
{
    int ticket = upTo(random, 100);
    std::size_t script = 0;
    while (ticket >= scripts[script].share)
        ticket -= scripts[script++].share;
    return QString::fromUtf8(scripts[script].words).split(u' ');
}

CapturedLink linkOf(Random &random, int number)
{
    const QStringList words = wordsOfSomeScript(random);
    CapturedLink link;
    link.id = QUuid::createUuidV5(QUuid(), QString::number(number));
    link.url = u"https://site%1.example/%2/article-%3?ref=%4"_s.arg(
        QString::number(upTo(random, 500)), text(random, {u"news"_s, u"blog"_s, u"docs"_s}, 1),
        QString::number(number), QString::number(random(), 36).repeated(1 + upTo(random, 8)));
    if (upTo(random, 20) > 0)
        link.title = text(random, words, 3 + upTo(random, 9));
    if (link.title && upTo(random, 25) == 0)
        *link.title += u" 🎉"_s;
    if (upTo(random, 10) > 0)
        link.summary = text(random, words, 10 + upTo(random, 25)) + u'.';
    link.copiedAt = Instant(std::chrono::seconds(1'763'712'300 - 315 * number));
    return link;
}

} // namespace

QList<CapturedLink> manyLinks(int count)
{
    Random random(1);
    QList<CapturedLink> links;
    for (int i = 0; i < count; ++i)
        links.append(linkOf(random, i));
    return links;
}
