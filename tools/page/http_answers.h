// Answers as they go over the line. Each carries the headers that keep a page to itself.
#ifndef TAVMIR_PAGE_HTTP_ANSWERS_H
#define TAVMIR_PAGE_HTTP_ANSWERS_H

#include "page_content.h"

#include <array>
#include <string_view>

namespace tavmir::page
{

struct HeaderLine {
    const char* name;
    const char* value;
};

// On every answer, also that which begins a live connection.
extern const std::array<HeaderLine, 6> kSafeHeaders;

struct AnswerForm {
    bool isHead = false;    // all but the body
    bool staysOpen = true;  // the connection, for a next request
    const char* allow = ""; // with 405: the methods that there are
};

// What went wrong, in one line, as {"error": …}.
Answer errorAnswer(unsigned status, std::string_view text);

std::string answerBytes(const Answer& answer, const AnswerForm& form);
std::string answerBytes(unsigned status, std::string_view type, std::string_view body,
                        const AnswerForm& form, std::string_view fileName = {},
                        std::optional<long long> coveredMs = std::nullopt);

} // namespace tavmir::page

#endif
