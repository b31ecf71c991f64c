#pragma once
// The logging client for Qt programs: Qt's own types on the send family. One header; link the
// target Zentrail::qt (find_package(ZentrailQt)). Plain C++ programs do not need it.
//
//   #include <zentrail/ZentrailQt.h>
//   zentrail::qt::Send(zentrail::ZentrailLog, "Ok button", ui->btnOk);    // its properties
//   zentrail::qt::SendScreenShot(zentrail::ZentrailLog, "Main window", this);
//   zentrail::qt::SendControls(zentrail::ZentrailLog, "Widgets", this);
//
// Every function takes the logger first and, like the family, returns at once when it is off.
// QObject properties are read through QMetaObject: what Q_PROPERTY declares is what is listed.

#include <QColor>
#include <QDateTime>
#include <QFont>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QMetaEnum>
#include <QMetaObject>
#include <QMetaProperty>
#include <QObject>
#include <QPixmap>
#include <QPoint>
#include <QRect>
#include <QScreen>
#include <QSize>
#include <QVariant>
#include <QWidget>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ZentrailLogging.h"

namespace zentrail::qt {

inline std::string ToUtf8(const QString& text) { return text.toUtf8().toStdString(); }

// A colour $00BBGGRR of a QColor (alpha dropped).
inline int32_t ToZentrailColor(const QColor& color) {
  const QColor c = color.toRgb();
  return c.red() | (c.green() << 8) | (c.blue() << 16);
}

// Days since 30 December 1899 plus the fraction of the day, in local time.
inline double ToDateTimeValue(const QDateTime& value) {
  static const QDate epoch(1899, 12, 30);
  const QDateTime local = value.toLocalTime();
  return static_cast<double>(epoch.daysTo(local.date())) + local.time().msecsSinceStartOfDay() / 86400000.0;
}

inline TZentrailVariant ToZentrailVariant(const QVariant& value) {
  if (!value.isValid()) return {};
  if (value.isNull() && value.metaType().id() == QMetaType::Nullptr) return TZentrailVariant::Null();
  switch (value.metaType().id()) {
    case QMetaType::Bool: return TZentrailVariant(value.toBool());
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::LongLong:
    case QMetaType::Long: return TZentrailVariant(static_cast<int64_t>(value.toLongLong()));
    case QMetaType::Double:
    case QMetaType::Float: return TZentrailVariant(value.toDouble());
    case QMetaType::QDateTime:
    case QMetaType::QDate: {
      TZentrailVariant v = TZentrailVariant::Make(TZentrailVariant::vkDateTime);
      v.Float = ToDateTimeValue(value.toDateTime());
      return v;
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
      std::vector<TZentrailVariant> elements;
      for (const QVariant& e : value.toList()) elements.push_back(ToZentrailVariant(e));
      return TZentrailVariant(std::move(elements));
    }
    default:
      if (value.canConvert<QString>()) return TZentrailVariant(ToUtf8(value.toString()));
      return TZentrailVariant::Make(TZentrailVariant::vkError);
  }
}

inline TZentrailFont ToZentrailFont(const QFont& font) {
  TZentrailFont f;
  f.Name = ToUtf8(font.family());
  f.Size = font.pointSize() > 0 ? font.pointSize() : font.pixelSize();
  f.Bold = font.bold();
  f.Italic = font.italic();
  f.Underline = font.underline();
  f.StrikeOut = font.strikeOut();
  return f;
}

// A QObject as the property walk and the trees see it. Sub-objects and children are wrapped on
// demand and kept by the wrapper that asked for them.
class TZentrailQObject : public IZentrailPublished {
 public:
  explicit TZentrailQObject(const QObject* object) : FObject(object) {}

  std::string ZentrailClassName() const override { return FObject->metaObject()->className(); }
  std::string ZentrailObjectName() const override { return ToUtf8(FObject->objectName()); }
  const void* ZentrailIdentity() const override { return FObject; }

  void ZentrailProperties(TZentrailProperties& p) const override {
    const QMetaObject* meta = FObject->metaObject();
    for (int i = 0; i < meta->propertyCount(); ++i) {
      const QMetaProperty property = meta->property(i);
      if (!property.isReadable()) continue;
      AddProperty(p, property.name(), property, property.read(FObject));
    }
  }

  void ZentrailControls(std::vector<const IZentrailPublished*>& out) const override {
    for (QObject* child : FObject->children())
      if (child->isWidgetType()) out.push_back(Wrap(child));
  }
  void ZentrailComponents(std::vector<const IZentrailPublished*>& out) const override {
    for (QObject* child : FObject->children()) out.push_back(Wrap(child));
  }
  const IZentrailPublished* ZentrailParent() const override {
    return FObject->parent() ? Wrap(FObject->parent()) : nullptr;
  }

 private:
  const IZentrailPublished* Wrap(const QObject* object) const {
    FWrapped.push_back(std::make_unique<TZentrailQObject>(object));
    return FWrapped.back().get();
  }

  static void AddProperty(TZentrailProperties& p, const char* name, const QMetaProperty& property,
                          const QVariant& value) {
    if (property.isEnumType()) {
      const QMetaEnum e = property.enumerator();
      const int v = value.toInt();
      if (e.isFlag()) {
        std::vector<std::pair<std::string, bool>> elements;
        for (int k = 0; k < e.keyCount(); ++k) {
          const int bit = e.value(k);
          // Only the single flags make elements; combined names would repeat them.
          if (bit == 0 || (bit & (bit - 1)) != 0) continue;
          elements.emplace_back(e.key(k), (v & bit) == bit);
        }
        p.AddSet(name, e.name(), std::move(elements));
      } else {
        const char* key = e.valueToKey(v);
        p.AddEnum(name, key ? key : std::to_string(v));
      }
      return;
    }
    switch (value.metaType().id()) {
      case QMetaType::Bool: p.AddBoolean(name, value.toBool()); return;
      case QMetaType::Int:
      case QMetaType::Short:
      case QMetaType::UShort:
      case QMetaType::Char:
      case QMetaType::SChar:
      case QMetaType::UChar: p.AddInteger(name, value.toInt()); return;
      case QMetaType::UInt:
      case QMetaType::Long:
      case QMetaType::LongLong:
      case QMetaType::ULong:
      case QMetaType::ULongLong: p.AddInt64(name, value.toLongLong()); return;
      case QMetaType::Double:
      case QMetaType::Float: p.AddFloat(name, value.toDouble()); return;
      case QMetaType::QString:
      case QMetaType::QByteArray: p.AddString(name, ToUtf8(value.toString())); return;
      case QMetaType::QChar: p.AddChar(name, value.toChar().unicode()); return;
      case QMetaType::QColor: p.AddColor(name, ToZentrailColor(value.value<QColor>())); return;
      case QMetaType::QFont: p.AddFont(name, ToZentrailFont(value.value<QFont>())); return;
      case QMetaType::QDateTime: p.AddDateTime(name, ToDateTimeValue(value.toDateTime())); return;
      case QMetaType::QDate: p.AddDate(name, ToDateTimeValue(QDateTime(value.toDate(), QTime(0, 0)))); return;
      case QMetaType::QTime: p.AddTime(name, value.toTime().msecsSinceStartOfDay() / 86400000.0); return;
      case QMetaType::QSize: {
        const QSize s = value.toSize();
        p.AddString(name, "( " + std::to_string(s.width()) + ", " + std::to_string(s.height()) + " )");
        return;
      }
      case QMetaType::QPoint: {
        const QPoint s = value.toPoint();
        p.AddString(name, "( " + std::to_string(s.x()) + ", " + std::to_string(s.y()) + " )");
        return;
      }
      case QMetaType::QRect: {
        const QRect r = value.toRect();
        p.AddString(name, "( " + std::to_string(r.left()) + ", " + std::to_string(r.top()) + ", " +
                              std::to_string(r.right() + 1) + ", " + std::to_string(r.bottom() + 1) + " )");
        return;
      }
      default: break;
    }
    if (value.metaType().flags() & QMetaType::PointerToQObject) {
      const QObject* object = value.value<QObject*>();
      p.AddObject(name, object ? std::make_shared<TZentrailQObject>(object) : nullptr);
      return;
    }
    if (value.canConvert<QString>()) {
      p.AddVariant(name, ToZentrailVariant(value));
      return;
    }
    p.AddOther(name);
  }

  const QObject* FObject;
  mutable std::vector<std::unique_ptr<TZentrailQObject>> FWrapped;
};

// ---- Objects and values

inline int Send(TZentrailLogger& log, int32_t msgType, std::string_view name, const QObject* object) {
  if (!log.IsOn()) return 0;
  if (!object) return log.Send(msgType, name, static_cast<const IZentrailPublished*>(nullptr));
  TZentrailQObject wrapped(object);
  return log.Send(msgType, name, &wrapped);
}
inline int Send(TZentrailLogger& log, std::string_view name, const QObject* object) {
  return Send(log, ztmInfo, name, object);
}

inline int SendProperty(TZentrailLogger& log, std::string_view name, const QObject* object,
                        std::string_view propertyName) {
  if (!log.IsOn()) return 0;
  if (!object) return log.SendProperty(name, nullptr, propertyName);
  TZentrailQObject wrapped(object);
  return log.SendProperty(name, &wrapped, propertyName);
}

inline int SendComponentAsText(TZentrailLogger& log, std::string_view name, const QObject* object) {
  if (!log.IsOn()) return 0;
  if (!object) return log.SendComponentAsText(name, nullptr);
  TZentrailQObject wrapped(object);
  return log.SendComponentAsText(name, &wrapped);
}

inline int SendVariant(TZentrailLogger& log, int32_t msgType, std::string_view name, const QVariant& value) {
  return log.IsOn() ? log.SendVariant(msgType, name, ToZentrailVariant(value)) : 0;
}
inline int SendVariant(TZentrailLogger& log, std::string_view name, const QVariant& value) {
  return SendVariant(log, ztmInfo, name, value);
}

// An opaque colour as a plain one, a translucent one with its alpha.
inline int SendColor(TZentrailLogger& log, int32_t msgType, std::string_view name, const QColor& color) {
  if (!log.IsOn()) return 0;
  if (!color.isValid()) return log.SendError("Send Data Error: Color is Not Assigned");
  if (color.alpha() == 255) return log.SendColor(msgType, name, ToZentrailColor(color));
  return log.SendColorARGB(msgType, name, color.toRgb().rgba());
}
inline int SendColor(TZentrailLogger& log, std::string_view name, const QColor& color) {
  return SendColor(log, ztmInfo, name, color);
}

// ---- Pictures

inline int Send(TZentrailLogger& log, int32_t msgType, std::string_view name, const QImage& image) {
  if (!log.IsOn()) return 0;
  if (image.isNull()) return log.SendError("Send Data Error: Bitmap is Not Assigned");
  const QImage rgba = image.convertToFormat(QImage::Format_RGBA8888);
  TZentrailImage pixels{rgba.width(), rgba.height(), pfRGBA32, rgba.constBits(),
                        static_cast<std::size_t>(rgba.bytesPerLine())};
  return log.Send(msgType, name, pixels);
}
inline int Send(TZentrailLogger& log, std::string_view name, const QImage& image) {
  return Send(log, ztmInfo, name, image);
}
inline int Send(TZentrailLogger& log, int32_t msgType, std::string_view name, const QPixmap& pixmap) {
  if (!log.IsOn()) return 0;
  if (pixmap.isNull()) return log.SendError("Send Data Error: Picture is Not Assigned");
  return Send(log, msgType, name, pixmap.toImage());
}
inline int Send(TZentrailLogger& log, std::string_view name, const QPixmap& pixmap) {
  return Send(log, ztmInfo, name, pixmap);
}
inline int Send(TZentrailLogger& log, int32_t msgType, std::string_view name, const QIcon& icon,
                const QSize& size = QSize(32, 32)) {
  if (!log.IsOn()) return 0;
  if (icon.isNull()) return log.SendError("Send Data Error: Icon is Not Assigned");
  return Send(log, msgType, name, icon.pixmap(size));
}
inline int Send(TZentrailLogger& log, std::string_view name, const QIcon& icon, const QSize& size = QSize(32, 32)) {
  return Send(log, ztmInfo, name, icon, size);
}

// What the widget shows now, as a picture.
inline int SendScreenShot(TZentrailLogger& log, std::string_view name, QWidget* widget) {
  if (!log.IsOn()) return 0;
  if (!widget) return log.SendError("Send Data Error: Bitmap is Not Assigned");
  return Send(log, ztmInfo, name, widget->grab());
}

// ---- Trees and windows

inline int SendControls(TZentrailLogger& log, std::string_view name, const QWidget* widget) {
  if (!log.IsOn()) return 0;
  if (!widget) return log.SendControls(name, nullptr);
  TZentrailQObject wrapped(widget);
  return log.SendControls(name, &wrapped);
}
inline int SendComponents(TZentrailLogger& log, std::string_view name, const QObject* object) {
  if (!log.IsOn()) return 0;
  if (!object) return log.SendComponents(name, nullptr);
  TZentrailQObject wrapped(object);
  return log.SendComponents(name, &wrapped);
}
inline int SendParents(TZentrailLogger& log, std::string_view name, const QObject* object) {
  if (!log.IsOn()) return 0;
  if (!object) return log.SendParents(name, nullptr);
  TZentrailQObject wrapped(object);
  return log.SendParents(name, &wrapped);
}

// The window fields of a widget: its native handle once it has one, else the widget's address.
inline TZentrailWindowInfo WindowInfo(const QWidget* widget) {
  TZentrailWindowInfo info;
  info.Handle = widget->internalWinId() ? static_cast<uint64_t>(widget->internalWinId())
                                        : static_cast<uint64_t>(reinterpret_cast<uintptr_t>(widget));
  info.Caption = ToUtf8(widget->windowTitle());
  const QRect g = widget->geometry();
  info.Top = g.top();
  info.Left = g.left();
  info.Width = g.width();
  info.Height = g.height();
  info.ClassName = widget->metaObject()->className();
  info.UserData = ToUtf8(widget->objectName());
  const Qt::WindowFlags flags = widget->windowFlags();
  const std::pair<Qt::WindowType, const char*> kFlags[] = {
      {Qt::FramelessWindowHint, "FramelessWindowHint"}, {Qt::WindowTitleHint, "WindowTitleHint"},
      {Qt::WindowSystemMenuHint, "WindowSystemMenuHint"}, {Qt::WindowMinimizeButtonHint, "WindowMinimizeButtonHint"},
      {Qt::WindowMaximizeButtonHint, "WindowMaximizeButtonHint"}, {Qt::WindowCloseButtonHint, "WindowCloseButtonHint"},
      {Qt::WindowStaysOnTopHint, "WindowStaysOnTopHint"}};
  info.Styles.push_back(widget->isWindow() ? "Window" : "Child");
  if (widget->isVisible()) info.Styles.push_back("Visible");
  if (!widget->isEnabled()) info.Styles.push_back("Disabled");
  for (const auto& [flag, text] : kFlags)
    if (flags.testFlag(flag)) info.Styles.push_back(text);
  const std::pair<Qt::WidgetAttribute, const char*> kAttributes[] = {
      {Qt::WA_DeleteOnClose, "WA_DeleteOnClose"},       {Qt::WA_TranslucentBackground, "WA_TranslucentBackground"},
      {Qt::WA_ShowWithoutActivating, "WA_ShowWithoutActivating"}, {Qt::WA_NativeWindow, "WA_NativeWindow"},
      {Qt::WA_AlwaysShowToolTips, "WA_AlwaysShowToolTips"}, {Qt::WA_AcceptDrops, "WA_AcceptDrops"}};
  for (const auto& [attribute, text] : kAttributes)
    if (widget->testAttribute(attribute)) info.ExStyles.push_back(text);
  return info;
}

inline int SendWindowHandle(TZentrailLogger& log, std::string_view name, const QWidget* widget) {
  if (!log.IsOn()) return 0;
  if (!widget) return log.SendWindowHandle(name, nullptr);
  const TZentrailWindowInfo info = WindowInfo(widget);
  return log.SendWindowHandle(name, &info);
}

// System information with the screens of the running application.
inline int SendSystemInfo(TZentrailLogger& log, int32_t msgType = ztmInfo) {
  if (!log.IsOn()) return 0;
  TZentrailScreenInfo info;
  const QList<QScreen*> screens = QGuiApplication::screens();
  info.Monitors = static_cast<int>(screens.size());
  if (QScreen* primary = QGuiApplication::primaryScreen()) {
    info.PrimaryWidth = primary->geometry().width();
    info.PrimaryHeight = primary->geometry().height();
    const QRect v = primary->virtualGeometry();
    info.VirtualScreen = {v.left(), v.top(), v.right() + 1, v.bottom() + 1};
    info.PixelsPerInch = static_cast<int>(primary->logicalDotsPerInch() + 0.5);
    info.ColorDepth = primary->depth();
  }
  return log.SendSystemInfo(msgType, &info);
}

}  // namespace zentrail::qt
