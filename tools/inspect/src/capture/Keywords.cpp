/** @file
  Names of the string table: a bare name, followed by annotations in square brackets.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Keywords.hpp"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "bytes/Text.hpp"

namespace corvane::inspect {
namespace {

constexpr std::string_view kRegEx = "RegEx:";
constexpr std::string_view kForceIf = "ForceIf:";
constexpr std::string_view kForceIfNot = "ForceIfNot:";
constexpr std::size_t kOctalDigits = 3;

bool IsOctal(std::string_view digits) {
  return digits.size() == kOctalDigits && digits.front() <= '3' &&
         std::all_of(digits.begin(), digits.end(), [](char digit) { return digit >= '0' && digit <= '7'; });
}

// Parses the text between the brackets. Returns what is wrong with the text; empty if nothing is wrong.
std::string ReadAnnotation(std::string_view content, Annotation& annotation) {
  if (content.starts_with(kRegEx)) {
    annotation.Kind = AnnotationKind::RegEx;
    annotation.Expression = UnescapeExpression(content.substr(kRegEx.size()));
    return annotation.Expression.empty() ? "has no expression" : "";
  }
  const bool inverted = content.starts_with(kForceIfNot);
  if (!inverted && !content.starts_with(kForceIf)) {
    return "is of an unknown kind";
  }
  annotation.Kind = inverted ? AnnotationKind::ForceIfNot : AnnotationKind::ForceIf;
  content.remove_prefix(inverted ? kForceIfNot.size() : kForceIf.size());
  const std::size_t equals = content.find('=');
  annotation.Attribute = content.substr(0, equals);
  annotation.Value = equals == content.npos ? std::string_view() : content.substr(equals + 1);
  if (annotation.Attribute.empty() || annotation.Value.empty()) {
    return "does not name an attribute and its value";
  }
  return content.find(' ') == content.npos ? "" : "contains a blank";
}

}  // namespace

std::string UnescapeExpression(std::string_view escaped) {
  std::string out;
  while (!escaped.empty()) {
    const char character = escaped.front();
    escaped.remove_prefix(1);
    if (character != '\\') {
      out.push_back(character);
      continue;
    }
    if (escaped.starts_with('\\')) {
      escaped.remove_prefix(1);
    }
    const std::string_view digits = escaped.substr(0, kOctalDigits);
    if (!IsOctal(digits)) {
      out.push_back('\\');
      if (!escaped.empty()) {
        out.push_back(escaped.front());
        escaped.remove_prefix(1);
      }
      continue;
    }
    const int code = 64 * (digits[0] - '0') + 8 * (digits[1] - '0') + (digits[2] - '0');
    if (code == '[' || code == ']') {
      out.push_back(static_cast<char>(code));
    } else {
      fmt::format_to(std::back_inserter(out), "\\x{:02x}", code);
    }
    escaped.remove_prefix(kOctalDigits);
  }
  return out;
}

Keyword ParseKeyword(std::string_view name) {
  Keyword keyword;
  keyword.Bare = WithoutAnnotations(name);
  std::string_view rest = name.substr(keyword.Bare.size());
  const auto complain = [&keyword](std::string_view text, std::string_view what) {
    if (keyword.Problem.empty()) {
      keyword.Problem = fmt::format("{} {}", Quote(text), what);
    }
  };
  while (!rest.empty()) {
    const std::size_t end = rest.find(']');
    if (rest.front() != '[' || end == rest.npos) {
      complain(rest, rest.front() != '[' ? "stands outside the brackets" : "has no closing bracket");
      break;
    }
    Annotation annotation;
    annotation.Text = rest.substr(0, end + 1);
    if (const std::string problem = ReadAnnotation(rest.substr(1, end - 1), annotation); !problem.empty()) {
      complain(annotation.Text, problem);
    }
    keyword.Annotations.push_back(std::move(annotation));
    rest.remove_prefix(end + 1);
  }
  return keyword;
}

}  // namespace corvane::inspect
