#include "PdfText.h"

#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

namespace zentrail::test {

namespace {

std::string Utf8(char32_t c) {
  std::string out;
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
  return out;
}

bool Inflate(const std::string& in, std::string& out) {
  z_stream zs{};
  if (inflateInit(&zs) != Z_OK) return false;
  zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data()));
  zs.avail_in = static_cast<uInt>(in.size());
  char buffer[65536];
  int rc = Z_OK;
  do {
    zs.next_out = reinterpret_cast<Bytef*>(buffer);
    zs.avail_out = sizeof buffer;
    rc = inflate(&zs, Z_NO_FLUSH);
    if (rc != Z_OK && rc != Z_STREAM_END) {
      inflateEnd(&zs);
      return false;
    }
    out.append(buffer, sizeof buffer - zs.avail_out);
  } while (rc != Z_STREAM_END);
  inflateEnd(&zs);
  return true;
}

class TReader {
 public:
  explicit TReader(std::string data) : FData(std::move(data)) {}

  bool ReadXref(std::string& error) {
    const std::size_t start = FData.rfind("startxref");
    if (start == std::string::npos) return Fail(error, "no startxref");
    std::size_t pos = std::stoul(FData.substr(start + 9, 32));
    if (FData.compare(pos, 4, "xref") != 0) return Fail(error, "no xref table");
    std::istringstream in(FData.substr(pos + 4, 64));
    std::size_t first = 0, count = 0;
    in >> first >> count;
    std::size_t line = FData.find('\n', FData.find('\n', pos) + 1) + 1;
    for (std::size_t i = 0; i < count; ++i, line += 20) {
      const std::size_t offset = std::stoul(FData.substr(line, 10));
      if (FData[line + 17] == 'n') FOffsets[static_cast<int>(first + i)] = offset;
    }
    return true;
  }

  // The dictionary text of an object (everything before its stream, or the whole body).
  std::string Dict(int num) const {
    const auto it = FOffsets.find(num);
    if (it == FOffsets.end()) return {};
    const std::size_t begin = FData.find("obj", it->second) + 3;
    const std::size_t end = FData.find("endobj", begin);
    const std::size_t stream = FData.find("stream", begin);
    return FData.substr(begin, std::min(end, stream) - begin);
  }

  std::string Stream(int num) const {
    const auto it = FOffsets.find(num);
    if (it == FOffsets.end()) return {};
    const std::string dict = Dict(num);
    std::smatch m;
    long length = 0;
    if (std::regex_search(dict, m, std::regex(R"(/Length (\d+) 0 R)"))) {
      length = std::stol(Dict(std::stoi(m[1])));
    } else if (std::regex_search(dict, m, std::regex(R"(/Length (\d+))"))) {
      length = std::stol(m[1]);
    }
    std::size_t begin = FData.find("stream", FData.find("obj", it->second)) + 6;
    if (FData[begin] == '\r') ++begin;
    if (FData[begin] == '\n') ++begin;
    std::string raw = FData.substr(begin, static_cast<std::size_t>(length));
    if (dict.find("/FlateDecode") == std::string::npos) return raw;
    std::string out;
    return Inflate(raw, out) ? out : std::string();
  }

  static int Ref(const std::string& dict, const std::string& key) {
    std::smatch m;
    if (std::regex_search(dict, m, std::regex(key + R"(\s+(\d+) 0 R)"))) return std::stoi(m[1]);
    return -1;
  }

 private:
  static bool Fail(std::string& error, const char* what) {
    error = what;
    return false;
  }
  std::string FData;
  std::map<int, std::size_t> FOffsets;
};

std::map<unsigned, char32_t> ReadCMap(const std::string& cmap) {
  std::map<unsigned, char32_t> map;
  auto hex = [](const std::string& s) { return static_cast<unsigned>(std::stoul(s, nullptr, 16)); };
  std::size_t pos = 0;
  while ((pos = cmap.find("beginbfrange", pos)) != std::string::npos) {
    const std::size_t end = cmap.find("endbfrange", pos);
    std::istringstream in(cmap.substr(pos + 12, end - pos - 12));
    std::string line;
    while (std::getline(in, line)) {
      std::smatch m;
      if (std::regex_search(line, m, std::regex(R"(<([0-9A-Fa-f]+)>\s*<([0-9A-Fa-f]+)>\s*\[(.*)\])"))) {
        unsigned code = hex(m[1]);
        const std::string list = m[3];
        static const std::regex entry(R"(<([0-9A-Fa-f]+)>)");
        for (std::sregex_iterator it(list.begin(), list.end(), entry), stop; it != stop; ++it) {
          map[code++] = hex((*it)[1]);
        }
      } else if (std::regex_search(line, m, std::regex(R"(<([0-9A-Fa-f]+)>\s*<([0-9A-Fa-f]+)>\s*<([0-9A-Fa-f]+)>)"))) {
        for (unsigned c = hex(m[1]), u = hex(m[3]); c <= hex(m[2]); ++c, ++u) map[c] = u;
      }
    }
    pos = end;
  }
  pos = 0;
  while ((pos = cmap.find("beginbfchar", pos)) != std::string::npos) {
    const std::size_t end = cmap.find("endbfchar", pos);
    const std::string body = cmap.substr(pos, end - pos);
    static const std::regex pair(R"(<([0-9A-Fa-f]+)>\s*<([0-9A-Fa-f]+)>)");
    for (std::sregex_iterator it(body.begin(), body.end(), pair), stop; it != stop; ++it) {
      map[hex((*it)[1])] = hex((*it)[2]);
    }
    pos = end;
  }
  return map;
}

struct TPlaced {
  double X, Y;
  char32_t Char;
};

void ReadContent(const std::string& content, const std::map<std::string, std::map<unsigned, char32_t>>& fonts,
                 std::vector<TPlaced>& out) {
  std::vector<std::string> operands;
  double lineX = 0, lineY = 0;
  const std::map<unsigned, char32_t>* font = nullptr;
  std::size_t i = 0;
  const std::size_t n = content.size();
  auto show = [&](const std::string& hexText) {
    for (std::size_t k = 0; k + 4 <= hexText.size(); k += 4) {
      const unsigned code = static_cast<unsigned>(std::stoul(hexText.substr(k, 4), nullptr, 16));
      char32_t c = U'?';
      if (font) {
        const auto it = font->find(code);
        if (it != font->end()) c = it->second;
      }
      if (c == U'\t') c = U' ';  // the writer maps the blank glyph this way
      out.push_back({lineX + static_cast<double>(k) * 1e-3, -lineY, c});
    }
  };
  while (i < n) {
    const char c = content[i];
    if (std::isspace(static_cast<unsigned char>(c))) {
      ++i;
    } else if (c == '<' && i + 1 < n && content[i + 1] != '<') {
      const std::size_t end = content.find('>', i);
      operands.push_back("<" + content.substr(i + 1, end - i - 1));
      i = end + 1;
    } else if (c == '[' || c == ']') {
      ++i;
    } else if (c == '(') {
      const std::size_t end = content.find(')', i);
      i = end + 1;
    } else {
      std::size_t end = i;
      while (end < n && !std::isspace(static_cast<unsigned char>(content[end])) && content[end] != '<' &&
             content[end] != '[' && content[end] != ']' && content[end] != '(') {
        ++end;
      }
      const std::string token = content.substr(i, end - i);
      i = end;
      const bool operand = token[0] == '/' || token[0] == '-' || token[0] == '.' || std::isdigit(static_cast<unsigned char>(token[0]));
      if (operand) {
        operands.push_back(token);
        continue;
      }
      if (token == "BT") {
        lineX = lineY = 0;
      } else if (token == "Tm" && operands.size() >= 6) {
        lineX = std::stod(operands[operands.size() - 2]);
        lineY = std::stod(operands[operands.size() - 1]);
      } else if (token == "Td" && operands.size() >= 2) {
        lineX += std::stod(operands[operands.size() - 2]);
        lineY += std::stod(operands[operands.size() - 1]);
      } else if (token == "Tf" && operands.size() >= 2) {
        const auto it = fonts.find(operands[operands.size() - 2].substr(1));
        font = it == fonts.end() ? nullptr : &it->second;
      } else if (token == "Tj" || token == "TJ") {
        for (const std::string& op : operands) {
          if (!op.empty() && op[0] == '<') show(op.substr(1));
        }
      }
      operands.clear();
    }
  }
}

}  // namespace

std::string TPdfLine::Text() const {
  std::string out;
  for (const TPdfGlyph& g : Glyphs) out += Utf8(g.Char);
  return out;
}

double TPdfLine::XOf(const std::string& word) const {
  std::u32string text;
  for (const TPdfGlyph& g : Glyphs) text += g.Char;
  std::u32string w;
  for (unsigned char c : word) w += static_cast<char32_t>(c);
  const std::size_t at = text.find(w);
  return at == std::u32string::npos ? -1 : Glyphs[at].X;
}

std::string TPdfPage::Text() const {
  std::string out;
  for (const TPdfLine& l : Lines) out += l.Text() + "\n";
  return out;
}

const TPdfLine* TPdfPage::LineWith(const std::string& what) const {
  for (const TPdfLine& l : Lines) {
    if (l.Text().find(what) != std::string::npos) return &l;
  }
  return nullptr;
}

std::string TPdfDocument::Text() const {
  std::string out;
  for (const TPdfPage& p : Pages) out += p.Text() + "\f";
  return out;
}

const TPdfLine* TPdfDocument::LineWith(const std::string& what) const {
  for (const TPdfPage& p : Pages) {
    if (const TPdfLine* l = p.LineWith(what)) return l;
  }
  return nullptr;
}

TPdfDocument ReadPdfText(const std::filesystem::path& file) {
  TPdfDocument doc;
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    doc.Error = "cannot open " + file.string();
    return doc;
  }
  std::string data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (data.compare(0, 5, "%PDF-") != 0) {
    doc.Error = "not a PDF file";
    return doc;
  }
  TReader reader(std::move(data));
  try {
    if (!reader.ReadXref(doc.Error)) return doc;
    const int catalog = [&] {
      for (int num = 1; num < 100000; ++num) {
        const std::string d = reader.Dict(num);
        if (d.find("/Type /Catalog") != std::string::npos) return num;
        if (d.empty() && num > 10000) break;
      }
      return -1;
    }();
    const int pagesRef = TReader::Ref(reader.Dict(catalog), "/Pages");
    const std::string pages = reader.Dict(pagesRef);
    const std::size_t kids = pages.find("/Kids");
    const std::string kidList = pages.substr(kids, pages.find(']', kids) - kids);
    static const std::regex ref(R"((\d+) 0 R)");
    for (std::sregex_iterator it(kidList.begin(), kidList.end(), ref), stop; it != stop; ++it) {
      const std::string page = reader.Dict(std::stoi((*it)[1]));
      const std::string resources = reader.Dict(TReader::Ref(page, "/Resources"));
      std::map<std::string, std::map<unsigned, char32_t>> fonts;
      const std::size_t fontAt = resources.find("/Font");
      if (fontAt != std::string::npos) {
        const std::string fontDict = resources.substr(fontAt, resources.find(">>", fontAt) - fontAt);
        static const std::regex fontRef(R"(/(\w+) (\d+) 0 R)");
        for (std::sregex_iterator f(fontDict.begin(), fontDict.end(), fontRef), fstop; f != fstop; ++f) {
          const int toUnicode = TReader::Ref(reader.Dict(std::stoi((*f)[2])), "/ToUnicode");
          if (toUnicode > 0) fonts[(*f)[1]] = ReadCMap(reader.Stream(toUnicode));
        }
      }
      std::vector<TPlaced> placed;
      ReadContent(reader.Stream(TReader::Ref(page, "/Contents")), fonts, placed);
      std::sort(placed.begin(), placed.end(), [](const TPlaced& a, const TPlaced& b) {
        return std::abs(a.Y - b.Y) > 0.5 ? a.Y < b.Y : a.X < b.X;
      });
      TPdfPage result;
      for (const TPlaced& p : placed) {
        if (result.Lines.empty() || std::abs(result.Lines.back().Y - p.Y) > 0.5) result.Lines.push_back({p.Y, {}});
        result.Lines.back().Glyphs.push_back({p.X, p.Char});
      }
      doc.Pages.push_back(std::move(result));
    }
  } catch (const std::exception& e) {
    doc.Error = std::string("unreadable PDF: ") + e.what();
  }
  return doc;
}

}  // namespace zentrail::test
