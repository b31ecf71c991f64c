#pragma once
// Reads the text back out of a PDF that Qt's PDF printer wrote: pages in order, lines top to
// bottom, glyphs left to right with their positions. It understands exactly what that writer
// produces (cross-reference table, deflated content streams, CID fonts with a ToUnicode map), so
// the printing tests need nothing outside the project.

#include <filesystem>
#include <string>
#include <vector>

namespace zentrail::test {

struct TPdfGlyph {
  double X = 0;
  char32_t Char = 0;
};

struct TPdfLine {
  double Y = 0;  // device units from the top
  std::vector<TPdfGlyph> Glyphs;
  std::string Text() const;
  // Horizontal position of the first occurrence of `word` in the line, or -1.
  double XOf(const std::string& word) const;
};

struct TPdfPage {
  std::vector<TPdfLine> Lines;
  std::string Text() const;  // lines joined with "\n"
  // The first line whose text contains `what`, or null.
  const TPdfLine* LineWith(const std::string& what) const;
};

struct TPdfDocument {
  std::vector<TPdfPage> Pages;
  std::string Error;  // empty when the file was read
  std::string Text() const;  // pages joined with "\f"
  const TPdfLine* LineWith(const std::string& what) const;
};

TPdfDocument ReadPdfText(const std::filesystem::path& file);

}  // namespace zentrail::test
