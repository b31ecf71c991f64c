#pragma once
// The viewer's help window: the user guide's HTML pages in a browser of their own, with back,
// forward and contents, so that help looks the same on every desktop and works without one.

#include <QUrl>
#include <QWidget>

class QTextBrowser;
class QToolButton;

namespace zentrail {

class TZTHelpBrowser : public QWidget {
  Q_OBJECT
 public:
  explicit TZTHelpBrowser(QWidget* parent = nullptr);
  void ShowPage(const QUrl& url);
  QTextBrowser* Browser() const { return FBrowser; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QTextBrowser* FBrowser;
  QToolButton *FBack, *FForward, *FHome;
  QUrl FHomeUrl;
};

}  // namespace zentrail
