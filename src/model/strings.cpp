#include "model/strings.h"

#include <cctype>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <unordered_map>

#include "model/resources.h"

namespace {

using Table = std::unordered_map<std::string, std::string>;

// Reads one quoted token starting at text[pos] == '"'; handles \" \\ \n \t escapes.
bool readQuoted(const std::string& text, std::size_t& pos, std::string& out) {
    if (pos >= text.size() || text[pos] != '"') {
        return false;
    }
    ++pos;
    out.clear();
    while (pos < text.size()) {
        char c = text[pos++];
        if (c == '"') {
            return true;
        }
        if (c == '\\' && pos < text.size()) {
            char e = text[pos++];
            out += e == 'n' ? '\n' : e == 't' ? '\t' : e;
        } else {
            out += c;
        }
    }
    return false;
}

void skipBlanksAndComments(const std::string& text, std::size_t& pos) {
    while (pos < text.size()) {
        if (std::isspace(static_cast<unsigned char>(text[pos]))) {
            ++pos;
        } else if (text.compare(pos, 2, "//") == 0) {
            pos = text.find('\n', pos);
            if (pos == std::string::npos)
                pos = text.size();
        } else if (text.compare(pos, 2, "/*") == 0) {
            pos = text.find("*/", pos + 2);
            pos = pos == std::string::npos ? text.size() : pos + 2;
        } else {
            return;
        }
    }
}

std::shared_ptr<const Table> tableNamed(std::string_view name) {
    static std::mutex mutex;
    static std::map<std::string, std::shared_ptr<const Table>, std::less<>> cache;
    static std::uint64_t cachedGeneration = resourceGeneration();
    std::lock_guard lock(mutex);
    // A change of resource folders (tests install their own) starts the cache over.
    if (cachedGeneration != resourceGeneration()) {
        cache.clear();
        cachedGeneration = resourceGeneration();
    }
    auto found = cache.find(name);
    if (found != cache.end()) {
        return found->second;
    }
    Table table;
    if (auto file = findResource("strings/" + std::string(name) + ".strings")) {
        std::vector<std::pair<std::string, std::string>> entries;
        if (parseStringTable(*file, entries)) {
            for (auto& [key, value] : entries) {
                table[key] = value;
            }
        }
    }
    return cache.emplace(std::string(name), std::make_shared<const Table>(std::move(table)))
        .first->second;
}

}  // namespace

bool parseStringTable(const std::filesystem::path& file,
                      std::vector<std::pair<std::string, std::string>>& entries) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        return false;
    }
    std::stringstream buffer;
    buffer << in.rdbuf();
    const std::string text = buffer.str();
    std::size_t pos = 0;
    while (true) {
        skipBlanksAndComments(text, pos);
        if (pos >= text.size()) {
            return true;
        }
        std::string key, value;
        if (!readQuoted(text, pos, key)) {
            return false;
        }
        skipBlanksAndComments(text, pos);
        if (pos >= text.size() || text[pos] != '=') {
            return false;
        }
        ++pos;
        skipBlanksAndComments(text, pos);
        if (!readQuoted(text, pos, value)) {
            return false;
        }
        skipBlanksAndComments(text, pos);
        if (pos < text.size() && text[pos] == ';') {
            ++pos;
        }
        entries.emplace_back(std::move(key), std::move(value));
    }
}

std::string localizedString(std::string_view table, std::string_view key,
                            std::string_view defaultText) {
    const auto entries = tableNamed(table);
    auto found = entries->find(std::string(key));
    return found != entries->end() ? found->second : std::string(defaultText);
}

bool hasLocalizedString(std::string_view table, std::string_view key) {
    const auto entries = tableNamed(table);
    return entries->find(std::string(key)) != entries->end();
}
