// Status lines and headers. Nothing in them comes from a client.
#include "http_answers.h"

namespace tavmir::page
{

const std::array<HeaderLine, 6> kSafeHeaders = {{
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
}};

namespace
{

struct StatusWords {
    unsigned status;
    const char* words;
};

constexpr StatusWords kStatusWords[] = {
    {200, "OK"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {408, "Request Timeout"},
    {409, "Conflict"},
    {413, "Payload Too Large"},
    {415, "Unsupported Media Type"},
    {417, "Expectation Failed"},
    {421, "Misdirected Request"},
    {431, "Request Header Fields Too Large"},
    {500, "Internal Server Error"},
    {503, "Service Unavailable"},
    {504, "Gateway Timeout"},
};

const char* wordsOf(unsigned status)
{
    for (const StatusWords& known : kStatusWords) {
        if (known.status == status) {
            return known.words;
        }
    }
    return "";
}

void add(std::string& head, std::string_view name, std::string_view value)
{
    head.append(name).append(": ").append(value).append("\r\n");
}

// Letters, digits, "." "-" "_": whatever else a name has could end the header early.
std::string plainName(std::string_view name)
{
    std::string plain;
    for (const char character : name) {
        const bool isPlain =
            (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
            (character >= 'A' && character <= 'Z') || character == '.' || character == '-';
        plain += isPlain ? character : '_';
    }
    return plain;
}

} // namespace

Answer errorAnswer(unsigned status, std::string_view text)
{
    Answer answer;
    answer.status = status;
    answer.body = "{\"error\":\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            answer.body += '\\';
        }
        answer.body += static_cast<unsigned char>(character) < 0x20 ? ' ' : character;
    }
    answer.body += "\"}";
    return answer;
}

std::string answerBytes(unsigned status, std::string_view type, std::string_view body,
                        const AnswerForm& form, std::string_view fileName,
                        std::optional<long long> coveredMs)
{
    std::string bytes = "HTTP/1.1 " + std::to_string(status) + ' ' + wordsOf(status) + "\r\n";
    add(bytes, "Content-Type", type);
    add(bytes, "Content-Length", std::to_string(body.size()));
    add(bytes, "Connection", form.staysOpen ? "keep-alive" : "close");
    for (const HeaderLine& line : kSafeHeaders) {
        add(bytes, line.name, line.value);
    }
    if (status == 401) {
        add(bytes, "WWW-Authenticate", "Bearer");
    }
    if (*form.allow != '\0') {
        add(bytes, "Allow", form.allow);
    }
    if (!fileName.empty()) {
        add(bytes, "Content-Disposition", "attachment; filename=\"" + plainName(fileName) + '"');
    }
    if (coveredMs) {
        add(bytes, "Covered-Ms", std::to_string(*coveredMs));
    }
    bytes += "\r\n";
    if (!form.isHead) {
        bytes += body;
    }
    return bytes;
}

std::string answerBytes(const Answer& answer, const AnswerForm& form)
{
    return answerBytes(answer.status, answer.type, answer.body, form, answer.fileName,
                       answer.coveredMs);
}

} // namespace tavmir::page
