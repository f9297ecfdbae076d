#include "emulator/jsontext.h"

#include <cctype>
#include <charconv>

namespace emulator {

namespace {

constexpr int deepest = 16;

class Reader {
public:
    explicit Reader(std::string_view text) : m_rest(text) {}

    bool readWhole() {
        skipBlanks();
        if (!m_rest.starts_with('{') || !readValue("", 0))
            return false;
        skipBlanks();
        return m_rest.empty();
    }

    std::map<std::string, std::string> values;

private:
    void skipBlanks() {
        while (!m_rest.empty() && std::isspace(static_cast<unsigned char>(m_rest.front())) != 0)
            m_rest.remove_prefix(1);
    }

    bool accept(char wanted) {
        skipBlanks();
        if (!m_rest.starts_with(wanted))
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    bool readText(std::string& text) {
        if (!accept('"'))
            return false;
        std::size_t end = 0;
        while (end < m_rest.size() && m_rest[end] != '"')
            end += m_rest[end] == '\\' ? 2U : 1U;
        if (end >= m_rest.size())
            return false;
        text = m_rest.substr(0, end);
        m_rest.remove_prefix(end + 1);
        return true;
    }

    bool readBare(const std::string& path) {
        const std::size_t end = std::min(m_rest.find_first_of(",}] \t\r\n"), m_rest.size());
        const std::string_view word = m_rest.substr(0, end);
        double number = 0;
        const auto parsed = std::from_chars(word.data(), word.data() + word.size(), number);
        const bool isNumber = parsed.ec == std::errc() && parsed.ptr == word.data() + word.size();
        if (!isNumber && word != "true" && word != "false" && word != "null")
            return false;
        values[path] = word;
        m_rest.remove_prefix(end);
        return true;
    }

    bool readMember(const std::string& path, int depth) {
        std::string name;
        skipBlanks();
        return readText(name) && accept(':') && readValue(path.empty() ? name : path + '.' + name, depth);
    }

    bool readList(const std::string& path, int depth, bool object) {
        const char close = object ? '}' : ']';
        m_rest.remove_prefix(1);
        if (accept(close))
            return true;
        for (int index = 0;; ++index) {
            const bool read = object ? readMember(path, depth + 1)
                                     : readValue(path + '.' + std::to_string(index), depth + 1);
            if (!read)
                return false;
            if (accept(close))
                return true;
            if (!accept(','))
                return false;
        }
    }

    bool readValue(const std::string& path, int depth) {
        skipBlanks();
        if (m_rest.empty() || depth > deepest)
            return false;
        if (m_rest.front() == '{' || m_rest.front() == '[')
            return readList(path, depth, m_rest.front() == '{');
        return m_rest.front() == '"' ? readText(values[path]) : readBare(path);
    }

    std::string_view m_rest;
};

} // namespace

std::optional<std::map<std::string, std::string>> readJsonObject(std::string_view text) {
    Reader reader(text);
    if (!reader.readWhole())
        return std::nullopt;
    return std::move(reader.values);
}

std::optional<long long> jsonNumber(const std::map<std::string, std::string>& values,
                                    const std::string& path) {
    const auto found = values.find(path);
    if (found == values.end())
        return std::nullopt;
    const std::string& text = found->second;
    long long number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size())
        return std::nullopt;
    return number;
}

} // namespace emulator
