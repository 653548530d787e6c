// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "DateText.h"
#include "LinkListModel.h"
#include "TitleFetcher.h"
#include "async/Scope.h"

#include <QObject>

#include <memory>

class Alarm;
class ClipboardSource;
class Clock;
class ModelContext;
class SummaryService;
class UrlOpener;

/// What the panel shows.
enum class MenuBarScreen { links, settings };

/// What a row of the list shows of a link.
struct LinkRow {
    ListPosition position;
    QString title; ///< the page's title, else the address
    QString time; ///< of copying, short, in the user's locale; for a moment, that it was copied
    std::optional<QString> summary;
};

/// The state and the actions of the menu bar panel. Texts are cut to their first 500 characters;
/// what is opened or copied is the record itself. Main thread only.
class MenuBarViewModel : public QObject
{
    Q_OBJECT
public:
    /// All of it outlives the model.
    struct Dependencies {
        ModelContext &modelContext;
        ClipboardSource &clipboard;
        UrlOpener &urlOpener;
        SummaryService &summaries;
        HttpClient &http;
        QThreadPool &pages; ///< has one thread
        Clock &clock;
    };

    explicit MenuBarViewModel(const Dependencies &dependencies, QObject *parent = nullptr);
    ~MenuBarViewModel() override;

    MenuBarScreen currentScreen() const { return m_currentScreen; }
    void setCurrentScreen(MenuBarScreen screen);

    /// Never reads ahead of a view.
    LinkListModel &links() { return m_links; }
    /// All that the place of the time may hold.
    QStringList times() const;
    /// The title, the address and the full date, as HTML without markup of its own; empty when the
    /// link is gone.
    QString toolTip(const LinkId &id) const;
    /// Lists the links that contain `text`; all for an empty one.
    void setSearchText(const QString &text);
    bool isSearching() const { return m_links.isSearching(); }
    /// What stands in the list when nothing was found; empty while more is read.
    QString nothingFoundText() const;
    LinkRow row(const ListPosition &position) const;

    bool isEmpty() const;
    /// Counts anew which links are of today, as happens with every change and at midnight. Also
    /// needed when the panel is shown: midnight may have passed while the machine slept.
    void recountToday();
    QString todayText() const; ///< how many listed links were copied today
    QString countText() const; ///< how many links are listed, and while searching of how many
    /// What the user must know about captures that do not work as they should; empty when all do.
    QString notice() const;
    /// What the program found out besides; empty when there is nothing to tell.
    void setNotice(const QString &notice);
    /// Nothing is captured because the user wants it so; the panel offers to go on.
    bool isPaused() const { return m_isPaused; }
    void setPaused(bool isPaused);

    /// From 0 to 1; absent when the model is not being loaded.
    std::optional<double> modelLoad() const { return m_modelLoad; }
    void setModelLoad(std::optional<double> progress);

    /// The summaries that the user asked for here are being written.
    bool isSummarizing() const { return m_isSummarizing; }
    QString summarizeToolTip() const;
    /// Writes the summaries that the listed links lack. A press while it does so does nothing.
    void summarize();

    void open(const LinkId &id);
    void copyUrl(const LinkId &id);
    void copySummary(const LinkId &id);
    void remove(const LinkId &id);
    /// Takes the address in the clipboard as if it was copied now, and says for a few seconds what
    /// came of it.
    void paste();

Q_SIGNALS:
    /// Rows show another time, since one says that it was copied, or no longer does.
    void timesChanged();
    /// Some text or flag is another. Rows announce themselves through `links()`.
    void changed();
    /// The user wants to go on capturing.
    void resumeRequested();

private:
    Task<> summarizeListed();
    void add(const std::optional<QString> &address);
    QString take(const QString &address);
    void copy(const LinkId &id, const QString &text);

    Dependencies m_dependencies;
    LinkListModel m_links;
    DateText m_dates;
    TitleFetcher m_titles;
    MenuBarScreen m_currentScreen = MenuBarScreen::links;
    qint64 m_today = 0;
    std::unique_ptr<Alarm> m_midnight;
    LinkId m_copied; ///< says so, for as long as `m_copiedEnd` is pending
    std::unique_ptr<Alarm> m_copiedEnd;
    QString m_notice;
    bool m_isPaused = false;
    QString m_answer; ///< to what the user did last, for as long as `m_answerEnd` is pending
    std::unique_ptr<Alarm> m_answerEnd;
    std::optional<double> m_modelLoad;
    bool m_isSummarizing = false;
    bool m_isPasting = false;
    Scope m_tasks;
};
