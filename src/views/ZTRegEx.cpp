#include "ZTRegEx.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace zentrail {

struct TZTRegEx::Code {
  pcre2_code* Pattern = nullptr;
  pcre2_match_data* MatchData = nullptr;
  ~Code() {
    if (MatchData) pcre2_match_data_free(MatchData);
    if (Pattern) pcre2_code_free(Pattern);
  }
};

TZTRegEx::TZTRegEx() = default;
TZTRegEx::~TZTRegEx() = default;
TZTRegEx::TZTRegEx(TZTRegEx&&) noexcept = default;
TZTRegEx& TZTRegEx::operator=(TZTRegEx&&) noexcept = default;

TZTRegEx::TZTRegEx(const TZTRegEx& other) {
  if (other.IsCompiled()) Compile(other.FPattern);
}

TZTRegEx& TZTRegEx::operator=(const TZTRegEx& other) {
  if (this == &other) return *this;
  if (other.IsCompiled())
    Compile(other.FPattern);
  else
    Clear();
  return *this;
}

void TZTRegEx::Compile(std::string_view pattern) {
  int errorCode = 0;
  PCRE2_SIZE errorOffset = 0;
  pcre2_code* code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size(),
                                   PCRE2_UTF | PCRE2_CASELESS, &errorCode, &errorOffset, nullptr);
  if (!code) {
    PCRE2_UCHAR buffer[256];
    pcre2_get_error_message(errorCode, buffer, sizeof buffer);
    throw EZTRegExError("Invalid regular expression \"" + std::string(pattern) + "\" at offset " +
                        std::to_string(errorOffset) + ": " + reinterpret_cast<const char*>(buffer));
  }
  pcre2_jit_compile(code, PCRE2_JIT_COMPLETE);  // without JIT support the interpreter runs instead
  auto compiled = std::make_shared<Code>();
  compiled->Pattern = code;
  compiled->MatchData = pcre2_match_data_create_from_pattern(code, nullptr);
  FCode = std::move(compiled);
  FPattern.assign(pattern);
}

void TZTRegEx::Clear() {
  FCode.reset();
  FPattern.clear();
}

bool TZTRegEx::Match(std::string_view text) const {
  if (!FCode) return false;
  // The store holds only valid UTF-8, so the check is skipped.
  const int rc = pcre2_match(FCode->Pattern, reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), 0,
                             PCRE2_NO_UTF_CHECK, FCode->MatchData, nullptr);
  return rc >= 0;
}

}  // namespace zentrail
