// The members of the send family that carry data in the details of the message: lists, objects,
// collections, trees, pictures, files, streams, XML, stack traces and custom data.
#include <cxxabi.h>
#include <execinfo.h>
#include <png.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

#include "ZentrailLogger.h"

namespace zentrail {

namespace {

// Reads a whole file; false with the reason when it cannot.
bool ReadWholeFile(const std::filesystem::path& file, std::string& bytes, std::string& reason) {
  errno = 0;
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    reason = std::strerror(errno ? errno : ENOENT);
    return false;
  }
  std::ostringstream buffer;
  buffer << in.rdbuf();
  if (in.bad()) {
    reason = "read error";
    return false;
  }
  bytes = std::move(buffer).str();
  return true;
}

// Lines as a string list reads them from text: CR LF, LF or CR end a line.
std::vector<std::string> TextLines(std::string_view text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r' && text[i] != '\n') continue;
    lines.emplace_back(text.substr(start, i - start));
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    start = i + 1;
  }
  if (start < text.size()) lines.emplace_back(text.substr(start));
  return lines;
}

std::string DisplayName(const IZentrailObjectInfo& object) {
  std::string name = object.ZentrailObjectName();
  return name.empty() ? object.ZentrailClassName() : name;
}

// Depth beyond which a tree is taken for a graph that does not end.
constexpr int kMaxTreeDepth = 64;

}  // namespace

int TZentrailLogger::Send(int32_t msgType, std::string_view name, const std::vector<std::string>& lines) {
  return IsOn() ? SendMsgDetails(msgType, ztmStringList, "std::vector<std::string>", lines, name) : 0;
}

int TZentrailLogger::Send(int32_t msgType, std::string_view name, const IZentrailCollection& collection) {
  if (!IsOn()) return 0;
  std::vector<std::string> lines;
  std::string recursion;
  try {
    for (std::size_t i = 0; i < collection.Count(); ++i) {
      const IZentrailPublished* item = collection.Item(i);
      std::vector<std::string> properties;
      if (item) properties = PropertyLines(*item, &recursion);
      lines.push_back(std::to_string(i) + " - " + (item ? DisplayName(*item) : std::string("nil")) + "|" +
                      DelimitedText(properties, ';'));
    }
  } catch (const std::exception& e) {
    return SendText(ztmError, "Send Data Error:  " + std::string(name) + ": " + e.what());
  }
  return SendMsgDetails(msgType, ztmCollection, collection.ZentrailClassName(), lines, name);
}

// ---------------------------------------------------------------------------------------------
// Pictures

namespace {

// PNG of the pixels through libpng's memory writer; empty with the reason when it fails.
std::string EncodePng(const TZentrailImage& image, std::string& reason) {
  png_image png;
  std::memset(&png, 0, sizeof png);
  png.version = PNG_IMAGE_VERSION;
  png.width = static_cast<png_uint_32>(image.Width);
  png.height = static_cast<png_uint_32>(image.Height);
  int channels = 4;
  switch (image.Format) {
    case pfGray8: png.format = PNG_FORMAT_GRAY; channels = 1; break;
    case pfRGB24: png.format = PNG_FORMAT_RGB; channels = 3; break;
    case pfRGBA32: png.format = PNG_FORMAT_RGBA; break;
    case pfBGRA32: png.format = PNG_FORMAT_BGRA; break;
  }
  const std::size_t packed = static_cast<std::size_t>(image.Width) * static_cast<std::size_t>(channels);
  const std::size_t stride = image.Stride ? image.Stride : packed;
  if (stride < packed) {
    reason = "the row stride is shorter than a row";
    return {};
  }
  // The stride is counted in components, which are bytes for these formats.
  const auto rowStride = static_cast<png_int_32>(stride);
  png_alloc_size_t size = 0;
  if (!png_image_write_to_memory(&png, nullptr, &size, 0, image.Pixels, rowStride, nullptr)) {
    reason = png.message;
    png_image_free(&png);
    return {};
  }
  std::string out(size, '\0');
  if (!png_image_write_to_memory(&png, out.data(), &size, 0, image.Pixels, rowStride, nullptr)) {
    reason = png.message;
    png_image_free(&png);
    return {};
  }
  out.resize(size);
  png_image_free(&png);
  return out;
}

}  // namespace

int TZentrailLogger::Send(int32_t msgType, std::string_view name, const TZentrailImage& image) {
  if (!IsOn()) return 0;
  if (image.IsNull()) return SendText(ztmError, "Send Data Error: Bitmap is Not Assigned");
  if (image.Width > ztMaxImageSide || image.Height > ztMaxImageSide)
    return SendText(ztmError, "Send Data Error: Bitmap of " + std::to_string(image.Width) + " x " +
                                  std::to_string(image.Height) + " is too large to be shown");
  std::string reason;
  std::string png = EncodePng(image, reason);
  if (png.empty()) return SendText(ztmError, "Send Data Error: Bitmap could not be encoded: " + reason);
  return InternalSend(msgType, ztmBitmap, "PngImage", BytesToHex(std::as_bytes(std::span(png.data(), png.size()))),
                      name);
}

int TZentrailLogger::SendPngImage(int32_t msgType, std::string_view name, std::span<const std::byte> png) {
  if (!IsOn()) return 0;
  if (png.empty()) return SendText(ztmError, "Send Data Error: PngImage is Not Assigned");
  return InternalSend(msgType, ztmBitmap, "PngImage", BytesToHex(png), name);
}

// ---------------------------------------------------------------------------------------------
// Objects

int TZentrailLogger::ObjectWithoutProperties(std::string_view name, bool assigned) {
  if (!assigned) return SendText(ztmError, "Send Data Error:  " + std::string(name) + ": Object is nil");
  return SendText(ztmError, "Send Data Error:  " + std::string(name) + ": Object has no RTTI");
}

int TZentrailLogger::Send(int32_t msgType, std::string_view name, const IZentrailPublished* object) {
  if (!IsOn()) return 0;
  if (!object) return ObjectWithoutProperties(name, false);
  std::vector<std::string> lines;
  std::string recursion;
  std::string className;
  try {
    className = object->ZentrailClassName();
    lines = PropertyLines(*object, &recursion);
  } catch (const std::exception& e) {
    return SendText(ztmError, "Send Data Error:  " + std::string(name) + ": " + e.what());
  }
  int result = SendMsgDetails(msgType, ztmObject, className, lines, name);
  // The object went out with the cycle cut; one line says where, so the reader is not misled.
  if (!recursion.empty() && IsOn())
    SendText(ztmWarning, "Send Data Warning:  " + std::string(name) + ": the object graph refers back to itself at " +
                             recursion + "; that property is not walked again");
  return result;
}

namespace {

std::string QuotedFormText(std::string_view text) {
  std::string out = "'";
  for (char ch : text) {
    if (ch == '\'') out += '\'';
    out += ch;
  }
  return out + "'";
}

struct TFormWriter {
  std::vector<std::string>& Lines;
  std::set<const void*> Path;

  void Properties(const IZentrailPublished& object, const std::string& indent, const std::string& prefix, int depth) {
    TZentrailProperties properties;
    object.ZentrailProperties(properties);
    for (const auto& p : properties.Items()) {
      const std::string name = prefix + p.Name;
      switch (p.Kind) {
        case TZentrailProperties::pkString:
        case TZentrailProperties::pkChar: Lines.push_back(indent + name + " = " + QuotedFormText(p.Value)); break;
        case TZentrailProperties::pkSet: {
          std::string set = "[";
          for (const auto& [element, on] : p.Elements) {
            if (!on) continue;
            if (set.size() > 1) set += ", ";
            set += element;
          }
          Lines.push_back(indent + name + " = " + set + "]");
          break;
        }
        case TZentrailProperties::pkObject:
          // Sub-objects stream their own properties under the dotted name; links to others are
          // not part of the form text.
          if (p.Object && depth < kMaxTreeDepth && !Path.count(p.Object->ZentrailIdentity())) {
            Path.insert(p.Object->ZentrailIdentity());
            Properties(*p.Object, indent, name + ".", depth + 1);
            Path.erase(p.Object->ZentrailIdentity());
          }
          break;
        case TZentrailProperties::pkOther: break;
        default: Lines.push_back(indent + name + " = " + p.Value); break;
      }
    }
  }

  void Component(const IZentrailPublished& object, const std::string& indent, int depth) {
    std::string objectName = object.ZentrailObjectName();
    Lines.push_back(indent + "object " + (objectName.empty() ? std::string() : objectName + ": ") +
                    object.ZentrailClassName());
    Path.insert(object.ZentrailIdentity());
    Properties(object, indent + "  ", {}, depth);
    std::vector<const IZentrailPublished*> children;
    object.ZentrailComponents(children);
    for (const auto* child : children)
      if (child && depth < kMaxTreeDepth && !Path.count(child->ZentrailIdentity()))
        Component(*child, indent + "  ", depth + 1);
    Path.erase(object.ZentrailIdentity());
    Lines.push_back(indent + "end");
  }
};

}  // namespace

int TZentrailLogger::SendComponentAsText(int32_t msgType, std::string_view name, const IZentrailPublished* component) {
  if (!IsOn()) return 0;
  if (!component) return ObjectWithoutProperties(name, false);
  std::vector<std::string> lines;
  try {
    TFormWriter writer{lines, {}};
    writer.Component(*component, {}, 0);
  } catch (const std::exception& e) {
    return SendText(ztmError, "Send Data Error:  " + std::string(name) + ": " + e.what());
  }
  return SendMsgDetails(msgType, ztmComponentAsText, component->ZentrailClassName(), lines, name);
}

int TZentrailLogger::SendProperty(int32_t msgType, std::string_view name, const IZentrailPublished* object,
                                  std::string_view propertyName) {
  if (!IsOn()) return 0;
  if (!object) return SendText(ztmError, "SendProperty Error: Object has no RTTI (" + std::string(name) + ")");
  try {
    TZentrailProperties properties;
    object->ZentrailProperties(properties);
    const auto* p = properties.Find(propertyName);
    if (!p)
      return SendText(ztmError, "SendProperty Error: " + object->ZentrailClassName() + " has no property " +
                                    std::string(propertyName) + " (" + std::string(name) + ")");
    std::string value = p->Value;
    if (p->Kind == TZentrailProperties::pkSet) {
      value = "[";
      for (const auto& [element, on] : p->Elements) {
        if (!on) continue;
        if (value.size() > 1) value += ", ";
        value += element;
      }
      value += "]";
    }
    return SendText(msgType, std::string(name) + ": " + value);
  } catch (const std::exception& e) {
    return SendText(ztmError, "SendProperty Error: " + std::string(e.what()) + " (" + std::string(name) + ")");
  }
}

namespace {

std::string TreeEntry(const IZentrailPublished& object) {
  std::string objectName = object.ZentrailObjectName();
  return object.ZentrailClassName() + ": " + (objectName.empty() ? std::string("<Unnamed>") : objectName);
}

void TreeLines(const IZentrailPublished& object, int level, bool components, std::set<const void*>& path,
               std::vector<std::string>& lines) {
  lines.push_back(std::string(static_cast<std::size_t>(level), '\t') + TreeEntry(object));
  if (level >= kMaxTreeDepth) return;
  std::vector<const IZentrailPublished*> children;
  if (components) object.ZentrailComponents(children);
  else object.ZentrailControls(children);
  path.insert(object.ZentrailIdentity());
  for (const auto* child : children)
    if (child && !path.count(child->ZentrailIdentity())) TreeLines(*child, level + 1, components, path, lines);
  path.erase(object.ZentrailIdentity());
}

}  // namespace

int TZentrailLogger::TreeOf(int32_t msgType, std::string_view name, const IZentrailPublished* object, int which) {
  static constexpr const char* kTypeNames[] = {"Controls", "Components", "Parents"};
  if (!object) return ObjectWithoutProperties(name, false);
  std::vector<std::string> lines;
  try {
    if (which < 2) {
      std::set<const void*> path;
      TreeLines(*object, 0, which == 1, path, lines);
    } else {
      // From the top-most parent down to the object itself.
      std::vector<const IZentrailPublished*> chain;
      std::set<const void*> seen;
      for (const IZentrailPublished* p = object; p && !seen.count(p->ZentrailIdentity()) && chain.size() < kMaxTreeDepth;
           p = p->ZentrailParent()) {
        seen.insert(p->ZentrailIdentity());
        chain.push_back(p);
      }
      for (std::size_t i = 0; i < chain.size(); ++i)
        lines.push_back(std::string(i, '\t') + TreeEntry(*chain[chain.size() - 1 - i]));
    }
  } catch (const std::exception& e) {
    return SendText(ztmError, "Send Data Error:  " + std::string(name) + ": " + e.what());
  }
  return SendMsgDetails(msgType, ztmCustomHierarchy, kTypeNames[which], lines, name);
}

int TZentrailLogger::SendControls(int32_t msgType, std::string_view name, const IZentrailPublished* object) {
  return IsOn() ? TreeOf(msgType, name, object, 0) : 0;
}
int TZentrailLogger::SendComponents(int32_t msgType, std::string_view name, const IZentrailPublished* object) {
  return IsOn() ? TreeOf(msgType, name, object, 1) : 0;
}
int TZentrailLogger::SendParents(int32_t msgType, std::string_view name, const IZentrailPublished* object) {
  return IsOn() ? TreeOf(msgType, name, object, 2) : 0;
}

// ---------------------------------------------------------------------------------------------
// Files, streams and memory

int TZentrailLogger::SendTextFile(int32_t msgType, std::string_view name, const std::filesystem::path& file) {
  if (!IsOn()) return 0;
  std::string text, reason;
  if (!ReadWholeFile(file, text, reason))
    return SendText(ztmError, "SendTextFile Error: " + file.string() + ": " + reason);
  return InternalSend(msgType, ztmTextFile, "Text File", text, name);
}

int TZentrailLogger::SendStreamAsText(int32_t msgType, std::string_view name, std::istream& stream) {
  if (!IsOn()) return 0;
  stream.clear();
  const std::streampos start = stream.tellg();
  std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  stream.clear();
  if (start != std::streampos(-1)) stream.seekg(start);
  return SendMsgDetails(msgType, ztmMemory, "Stream", TextLines(text), name);
}

int TZentrailLogger::SendStreamAsHex(int32_t msgType, std::string_view name, std::istream& stream) {
  return IsOn() ? InternalSend(msgType, ztmMemory, "Stream", HexDump(stream), name) : 0;
}

int TZentrailLogger::SendMemoryAsHex(int32_t msgType, std::string_view name, std::span<const std::byte> memory) {
  return IsOn() ? InternalSend(msgType, ztmMemory, "Stream", HexDump(memory, 0), name) : 0;
}

int TZentrailLogger::SendFileAsHex(int32_t msgType, std::string_view name, const std::filesystem::path& file) {
  if (!IsOn()) return 0;
  std::string bytes, reason;
  if (!ReadWholeFile(file, bytes, reason))
    return SendText(ztmError, "SendFileAsHex Error: " + file.string() + ": " + reason);
  return InternalSend(msgType, ztmMemory, "Stream", HexDump(std::as_bytes(std::span(bytes.data(), bytes.size())), 0),
                      name);
}

int TZentrailLogger::SendXmlData(int32_t msgType, std::string_view name, std::string_view xml) {
  return IsOn() ? InternalSend(msgType, ztmXmlData, "Xml Data", xml, name) : 0;
}

int TZentrailLogger::SendXmlFile(int32_t msgType, std::string_view name, const std::filesystem::path& file) {
  if (!IsOn()) return 0;
  std::string xml, reason;
  if (!ReadWholeFile(file, xml, reason))
    return SendText(ztmError, "SendXmlFile Error: " + file.string() + ": " + reason);
  return InternalSend(msgType, ztmXmlData, "Xml File", xml, name);
}

int TZentrailLogger::SendStackTrace(int32_t msgType, std::string_view name) {
  if (!IsOn()) return 0;
  void* frames[128];
  const int count = backtrace(frames, 128);
  char** symbols = backtrace_symbols(frames, count);
  std::vector<std::string> lines;
  // Frame 0 is this function: the caller's stack starts at 1.
  for (int i = 1; i < count; ++i) {
    std::string line = symbols ? symbols[i] : "?";
    // "module(mangled+0x1f) [0x...]": the function part is made readable.
    const auto open = line.find('(');
    const auto plus = line.find('+', open == std::string::npos ? 0 : open);
    if (open != std::string::npos && plus != std::string::npos && plus > open + 1) {
      std::string mangled = line.substr(open + 1, plus - open - 1);
      int status = 0;
      char* readable = abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, &status);
      if (status == 0 && readable) line = line.substr(0, open + 1) + readable + line.substr(plus);
      std::free(readable);
    }
    lines.push_back("#" + std::to_string(i - 1) + "  " + line);
  }
  std::free(symbols);
  return SendMsgDetails(msgType, ztmStackTrace, "Stack Trace", lines, name);
}

// ---------------------------------------------------------------------------------------------
// Custom data

int TZentrailLogger::SendCustomData(int32_t msgType, std::string_view name, int32_t customType, const std::any& data) {
  if (!IsOn()) return 0;
  TZentrailFormatterItem item = ZentrailFormatters().FindFormatterClass(customType);
  if (!item.FormatterClass) {
    char text[160];
    // Below the public range the wording follows the message type of the call rather than the
    // custom type; the usual call without a type therefore speaks of ztmReserved.
    if (customType >= ztmPublic)
      std::snprintf(text, sizeof text, "SendCustomData Error: MsgType (ztmPublic + %d) has no registered formatter",
                    customType - ztmPublic);
    else if (msgType >= ztmUser)
      std::snprintf(text, sizeof text, "SendCustomData Error: MsgType (ztmUser + %d) has no registered formatter",
                    customType - ztmUser);
    else
      std::snprintf(text, sizeof text, "SendCustomData Error: MsgType (ztmReserved + %d) has no registered formatter",
                    customType - ztmReserved);
    return SendText(ztmError, text);
  }
  std::vector<std::string> lines;
  TZentrailInspectorType inspector = itStockText;
  std::string typeName;
  try {
    std::unique_ptr<TZentrailFormatter> formatter = item.FormatterClass();
    if (!formatter) throw std::runtime_error("the formatter could not be made");
    inspector = formatter->InspectorType();
    formatter->FormatData(data);
    lines = formatter->FormattedData();
    typeName = formatter->TypeName();
  } catch (const std::exception& e) {
    return SendText(ztmError, "SendCustomData Error: " + item.ClassName + ": " + e.what());
  } catch (...) {
    return SendText(ztmError, "SendCustomData Error: " + item.ClassName + " failed");
  }
  return SendMsgDetails(msgType, ContentForInspectorType(inspector, customType), typeName, lines, name);
}

int TZentrailLogger::SendCustomData(int32_t msgType, std::string_view name, const IZentrailCustomData* data) {
  if (!IsOn() || !data) return 0;
  std::vector<std::string> lines;
  int32_t content = ztmCustomText;
  std::string typeName;
  try {
    data->FormatData(lines);
    content = ContentForInspectorType(data->InspectorType(), data->MsgType());
    typeName = data->TypeName();
  } catch (const std::exception& e) {
    return SendText(ztmError, "SendCustomData Error: " + std::string(name) + ": " + e.what());
  } catch (...) {
    return SendText(ztmError, "SendCustomData Error: " + std::string(name) + " failed");
  }
  return SendMsgDetails(msgType, content, typeName, lines, name);
}

}  // namespace zentrail
