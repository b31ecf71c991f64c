#include "ZTRegEx.h"

#include <new>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace zentrail {

struct TZTRegEx::Code {
  pcre2_code* Pattern = nullptr;
  pcre2_match_data* MatchData = nullptr;
  bool Jit = false;
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
  auto compiled = std::make_shared<Code>();
  compiled->Pattern = code;
  // Without JIT support the interpreter runs instead.
  compiled->Jit = pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) == 0;
  // Only whether it matches counts, so one pair of offsets is enough, made once for every match.
  compiled->MatchData = pcre2_match_data_create(1, nullptr);
  if (!compiled->MatchData) throw std::bad_alloc();
  FCode = std::move(compiled);
  FPattern.assign(pattern);
}

void TZTRegEx::Clear() {
  FCode.reset();
  FPattern.clear();
}

bool TZTRegEx::Match(std::string_view text) const {
  if (!FCode) return false;
  const auto subject = reinterpret_cast<PCRE2_SPTR>(text.data());
  // The JIT entry skips the option checks of the general one; it never checks UTF, which suits the
  // store, whose text is valid UTF-8 throughout.
  int rc = PCRE2_ERROR_JIT_STACKLIMIT;
  if (FCode->Jit) rc = pcre2_jit_match(FCode->Pattern, subject, text.size(), 0, 0, FCode->MatchData, nullptr);
  // The machine code runs on a small fixed stack; a pattern that backtracks deeply over a long text
  // outgrows it, and the interpreter, which keeps its frames on the heap, tries again. Without JIT
  // support the interpreter is all there is.
  if (rc == PCRE2_ERROR_JIT_STACKLIMIT)
    rc = pcre2_match(FCode->Pattern, subject, text.size(), 0, PCRE2_NO_UTF_CHECK | PCRE2_NO_JIT, FCode->MatchData,
                     nullptr);
  // An error such as a spent match limit counts as no match: a filter or search can't fail midway.
  return rc >= 0;
}

}  // namespace zentrail
