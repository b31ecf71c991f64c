#pragma once
// Log files written by hand, byte by byte from the written record format, so that the viewer's
// reader is checked against something its own writer did not produce.

#include <zlib.h>

#include <cstdint>
#include <fstream>
#include <filesystem>
#include <string>
#include <vector>

namespace zentrail::test {

// The 15 fields of a transport packet as text, in their order.
struct THandFields {
  int32_t MsgType = 0;
  int32_t MsgContent = 7;
  std::string RouteKey;
  std::string MsgText;
  std::string Details;
  int32_t Time = 36000000;
  int32_t Date = 730120;
  uint32_t ProcessID = 42;
  std::string ThreadName = "main";
  std::string AppName = "demo";
  std::string ComputerName = "box";
  std::string TypeName;
  std::string Category;
  int32_t CategoryColor = 16777215;
  int32_t CategoryFontColor = 0;
};

inline std::string HandPacket(const THandFields& f) {
  std::string out = "ZTP1";
  auto field = [&out](const std::string& value) { out += std::to_string(value.size()) + ":" + value; };
  field(std::to_string(f.MsgType));
  field(std::to_string(f.MsgContent));
  field(f.RouteKey);
  field(f.MsgText);
  field(f.Details);
  field(std::to_string(f.Time));
  field(std::to_string(f.Date));
  field(std::to_string(f.ProcessID));
  field(f.ThreadName);
  field(f.AppName);
  field(f.ComputerName);
  field(f.TypeName);
  field(f.Category);
  field(std::to_string(f.CategoryColor));
  field(std::to_string(f.CategoryFontColor));
  return out;
}

inline std::string LE32(uint32_t v) {
  return std::string{static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF), static_cast<char>((v >> 16) & 0xFF),
                     static_cast<char>((v >> 24) & 0xFF)};
}

inline std::string HandRecord(const THandFields& f) {
  const std::string packet = HandPacket(f);
  return LE32(0x7F000004) + LE32(static_cast<uint32_t>(packet.size())) + packet;
}

inline std::string HandRecordText(int32_t type, const std::string& text) {
  THandFields f;
  f.MsgType = type;
  f.MsgText = text;
  return HandRecord(f);
}

// A $7F000005 record: the packet deflated by zlib itself.
inline std::string HandCompressedRecord(const std::string& packet) {
  uLongf size = compressBound(static_cast<uLong>(packet.size()));
  std::string out(size, '\0');
  compress2(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(packet.data()),
            static_cast<uLong>(packet.size()), Z_DEFAULT_COMPRESSION);
  out.resize(size);
  return LE32(0x7F000005) + LE32(static_cast<uint32_t>(out.size())) + out;
}

// A legacy $7F000000 record: a 201-byte header, the text, the details and a closing byte.
inline std::string HandLegacyRecord(int32_t type, int32_t time, int32_t date, const std::string& text,
                                    const std::string& details, const std::string& thread, const std::string& app) {
  std::string header(201, '\0');
  auto put = [&header](std::size_t at, uint32_t v) { header.replace(at, 4, LE32(v)); };
  put(0, static_cast<uint32_t>(type));
  put(4, static_cast<uint32_t>(time));
  put(8, static_cast<uint32_t>(date));
  put(16, static_cast<uint32_t>(text.size()));
  put(20, static_cast<uint32_t>(details.size()));
  put(24, 77);
  header.replace(28, thread.size(), thread);
  header.replace(70, app.size(), app);
  put(152, 0x00FFFFFF);
  return LE32(0x7F000000) + header + text + details + "#";
}

inline void AppendToFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::app);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace zentrail::test
