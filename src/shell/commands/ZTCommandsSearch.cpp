// The Search menu's commands and the navigator's lists: finding, jumping, bookmarks, the
// synchronised message and stepping through messages of a chosen type or content. The navigator
// keeps the state and the handlers; these rows only name them.
#include "ZTMainForm.h"

#include <QAction>
#include <array>
#include <string>

#include "ZTImageList.h"
#include "ZTMsgView.h"
#include "ZTNavigator.h"

namespace zentrail {

namespace {

// The bookmark rows' texts, made once for the process: a row keeps pointers to them.
struct TBookmarkTexts {
  std::array<std::string, 10> ToggleName, ToggleCaption, ToggleKey, JumpName, JumpCaption, JumpKey;
  TBookmarkTexts() {
    for (size_t i = 0; i < 10; ++i) {
      const std::string n = std::to_string(i);
      ToggleName[i] = "actToggleBookmark" + n;
      ToggleCaption[i] = "Toggle Bookmark &" + n;
      ToggleKey[i] = "Shift+Ctrl+" + n;
      JumpName[i] = "actJumpToBookmark" + n;
      JumpCaption[i] = "Jump To Bookmark &" + n;
      JumpKey[i] = "Ctrl+" + n;
    }
  }
};

const TBookmarkTexts& BookmarkTexts() {
  static const TBookmarkTexts texts;
  return texts;
}

}  // namespace

void TFrmViewer::AddSearchCommands() {
  TZTNavigator& nav = *FNavigator;
  FCommands->Add("Search", TZTCommandList::Main, {
      {"actFind", "&Find...", "Find", "Ctrl+F", "find", [&nav] { nav.Find(); },
       [](const TZTCommandFacts& f) { return f.Rows && f.Search; }},
      {"actFindNext", "Find &Next", "Find Next", "F3", "findnext", [&nav] { nav.FindNext(); },
       [](const TZTCommandFacts& f) { return f.Rows && f.Search; }},
      {"actJumpToMsg", "Jump to &Message...", "Jump to Message", "Ctrl+J", "jumpto", [&nav] { nav.JumpToMsg(); },
       [](const TZTCommandFacts& f) { return f.Rows && f.Search && f.List; }},
      {"actClearBookmarks", "&Clear Bookmarks", "Clear All Bookmarks", "", "bookmarkclear",
       [&nav] { nav.ClearBookmarks(); }, [](const TZTCommandFacts& f) { return f.Focus && f.AnyBookmark; }},
      {"actSyncMsgMode", "&Synchronize Message Mode", "Synchronize selected message when changing views", "F9",
       "syncmsg", [&nav] { nav.FlipSyncMsgMode(); },
       [](const TZTCommandFacts& f) { return (f.Focus || f.SyncMode) && f.Views > 1; },
       [](const TZTCommandFacts& f) { return f.SyncMode; }},
      {"actUpdateSyncMsg", "&Update Synchronized Message", "Change the message currently being synchronized", "",
       "syncupdate",
       [this, &nav] {
         nav.UpdateSyncMsg();
         UpdateCommandStates();
       },
       [](const TZTCommandFacts& f) { return f.SyncMode && f.Views > 1; }},
      {"actSelectNavMsg", "Se&lect Navigation Message...", "Select Navigation Message", "", "navselect",
       [&nav] { nav.SelectNavMsg(); }},
      {"actNavFirst", "Fi&rst", "First Message", "Ctrl+Alt+Home", "navfirst", [&nav] { nav.Navigate(ztJumpFirst); },
       [](const TZTCommandFacts& f) { return f.NavHasPrevious; }},
      {"actNavPrevious", "&Previous", "Previous Message", "Ctrl+Alt+Up", "navprev",
       [&nav] { nav.Navigate(ztJumpPrevious); }, [](const TZTCommandFacts& f) { return f.NavHasPrevious; }},
      {"actNavNext", "Ne&xt", "Next Message", "Ctrl+Alt+Down", "navnext", [&nav] { nav.Navigate(ztJumpNext); },
       [](const TZTCommandFacts& f) { return f.NavHasNext; }},
      {"actNavLast", "L&ast", "Last Message", "Ctrl+Alt+End", "navlast", [&nav] { nav.Navigate(ztJumpLast); },
       [](const TZTCommandFacts& f) { return f.NavHasNext; }},
      {"actNavAutomatic", "A&utomatic", "", "", "navauto",
       [this, &nav] {
         nav.SetNavigatorAutomatic(!nav.NavigatorAutomatic());
         UpdateCommandStates();
       },
       {}, [&nav](const TZTCommandFacts&) { return nav.NavigatorAutomatic(); }},
      {"actNavTimeDiff", "&Time Difference", "", "", "timediff", [&nav] { nav.TimeDiffCommand(); }, {},
       [](const TZTCommandFacts& f) { return f.NavTimeDiff; }},
  });

  // The navigator's choices: the tag is the place in the list, -1 the "match any" entry. While
  // the navigator steps by time difference, neither list applies.
  auto choices = [&nav](const std::vector<TZTNavChoice>& list, TZTImageList* images, bool content) {
    std::vector<TZTCommandDef> rows;
    const int last = static_cast<int>(list.size()) - 1;
    for (const TZTNavChoice& c : list) {
      TZTCommandDef row{c.Name, c.Caption};
      const int32_t code = c.Code;
      if (content) {
        row.Execute = [&nav, code] { nav.ChooseMsgContent(code); };
      } else {
        row.Execute = [&nav, code] { nav.ChooseMsgType(code); };
      }
      row.Enabled = [](const TZTCommandFacts& f) { return !f.NavTimeDiff; };
      row.Tag = c.Tag;
      row.Checkable = true;
      row.Icon = QIcon(images->Image(c.Tag < 0 ? last : c.Tag));
      rows.push_back(std::move(row));
    }
    return rows;
  };
  FCommands->Add("Navigate", TZTCommandList::NavMsgType, choices(NavMsgTypeChoices(), nav.NavMsgTypeImages(), false));
  FCommands->Add("Navigate", TZTCommandList::NavMsgContent,
                 choices(NavMsgContentChoices(), nav.NavMsgContentImages(), true));

  // Bookmarks: a toggle is there for a focused row and checked while its bookmark is set; a jump
  // is there exactly while its toggle is checked.
  std::vector<TZTCommandDef> bookmarks;
  for (int32_t i = 0; i < 10; ++i) {
    const TBookmarkTexts& t = BookmarkTexts();
    const size_t at = static_cast<size_t>(i);
    TZTCommandDef toggle{t.ToggleName[at].c_str(), t.ToggleCaption[at].c_str(), "", t.ToggleKey[at].c_str()};
    toggle.Execute = [&nav, i] { nav.ToggleBookmark(i); };
    toggle.Enabled = [](const TZTCommandFacts& f) { return f.Focus && f.List; };
    toggle.Checked = [i](const TZTCommandFacts& f) { return f.Bookmarks[static_cast<size_t>(i)]; };
    toggle.Tag = i;
    toggle.Icon = QIcon(nav.BookmarkImages()->Image(i));
    bookmarks.push_back(std::move(toggle));
  }
  for (int32_t i = 0; i < 10; ++i) {
    const TBookmarkTexts& t = BookmarkTexts();
    const size_t at = static_cast<size_t>(i);
    TZTCommandDef jump{t.JumpName[at].c_str(), t.JumpCaption[at].c_str(), "", t.JumpKey[at].c_str()};
    jump.Execute = [&nav, i] { nav.JumpToBookmark(i); };
    jump.Enabled = [i](const TZTCommandFacts& f) { return f.Bookmarks[static_cast<size_t>(i)]; };
    jump.Tag = i;
    jump.Icon = QIcon(nav.BookmarkImages()->Image(i));
    bookmarks.push_back(std::move(jump));
  }
  FCommands->Add("Search", TZTCommandList::Bookmarks, std::move(bookmarks));
}

}  // namespace zentrail
