#pragma once
// A compiled regular expression over the UTF-8 text of the store: case-insensitive, unanchored,
// JIT-compiled where the library can. Text in the store is valid UTF-8, so matching skips the check.

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zentrail {

class EZTRegExError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class TZTRegEx {
 public:
  TZTRegEx();
  ~TZTRegEx();
  TZTRegEx(const TZTRegEx& other);
  TZTRegEx& operator=(const TZTRegEx& other);
  TZTRegEx(TZTRegEx&&) noexcept;
  TZTRegEx& operator=(TZTRegEx&&) noexcept;

  // Throws EZTRegExError with the library's text and the offset when the pattern does not compile.
  void Compile(std::string_view pattern);
  void Clear();
  bool IsCompiled() const { return FCode != nullptr; }
  const std::string& Pattern() const { return FPattern; }

  // True if the expression matches anywhere in text; false when nothing is compiled.
  bool Match(std::string_view text) const;

 private:
  struct Code;
  std::string FPattern;
  std::shared_ptr<Code> FCode;
};

}  // namespace zentrail
