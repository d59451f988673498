#include "CSourceFeed.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "CSubSampleBuilder.h"
#include "ITTMLSource.h"
#include "TTMLLog.h"
#include "TTMLTypes.h"

namespace TTML {

namespace {

struct CommandDef {
    const char* name;
    int msgId;
};

const CommandDef kCommands[] = {
    {"document", TTML_SOURCE_MSG_XML_DATA},
    {"start", TTML_SOURCE_MSG_START},
    {"stop", TTML_SOURCE_MSG_STOP},
    {"pause", TTML_SOURCE_MSG_PAUSE},
    {"resume", TTML_SOURCE_MSG_RESUME},
    {"invalidate", TTML_SOURCE_MSG_INVALIDATE},
    {"seek", TTML_SOURCE_MSG_SEEK_START},
    {"seekcompleted", TTML_SOURCE_MSG_SEEK_COMPLETED},
    {"menu-register", TTML_SOURCE_MSG_MENU_REGISTER},
    {"menu-unregister", TTML_SOURCE_MSG_MENU_UNREGISTER},
    {"menu-lang", TTML_SOURCE_MSG_MENU_LANG},
    {"show", TTML_SOURCE_MSG_SHOW},
    {"hide", TTML_SOURCE_MSG_HIDE},
    {"fonts-failed", TTML_SOURCE_MSG_FONT_ERROR},
};

// Whole-token decimal; strtoll alone accepts "12abc", " 12" and "+12".
bool ParseNumber(const std::string& text, bool allowNegative, long long& out)
{
    size_t i = (allowNegative && !text.empty() && text[0] == '-') ? 1 : 0;
    if (i == text.size())
        return false;
    for (size_t k = i; k < text.size(); ++k) {
        if (text[k] < '0' || text[k] > '9')
            return false;
    }
    errno = 0;
    long long value = std::strtoll(text.c_str(), nullptr, 10);
    if (errno == ERANGE)
        return false;
    out = value;
    return true;
}

std::vector<std::string> SplitList(const std::string& text)
{
    std::vector<std::string> parts;
    std::string::size_type pos = 0;
    while (true) {
        std::string::size_type comma = text.find(',', pos);
        parts.push_back(text.substr(pos, comma == std::string::npos ? std::string::npos : comma - pos));
        if (comma == std::string::npos)
            break;
        pos = comma + 1;
    }
    return parts;
}

std::string Resolve(const std::string& name, const std::string& baseDir)
{
    if (name.empty() || name[0] == '/' || baseDir.empty())
        return name;
    return baseDir + "/" + name;
}

bool IsReadable(const std::string& path)
{
    std::error_code ec;
    return std::filesystem::is_regular_file(path, ec) && access(path.c_str(), R_OK) == 0;
}

// A document begins with '<' once a byte-order mark and whitespace are skipped.
bool LooksLikeDocument(const std::string& text)
{
    size_t i = 0;
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0)
        i = 3;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t' || text[i] == '\n' || text[i] == '\r'))
        ++i;
    return i < text.size() && text[i] == '<';
}

bool HasDocumentExtension(const std::filesystem::path& path)
{
    std::string ext = path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
    return ext == ".ttml" || ext == ".xml";
}

}  // namespace

#define FEED_ERROR(fmt, ...) TTML_ERROR("Feed %s:%d: " fmt, name.c_str(), lineNo, ##__VA_ARGS__)

void CSourceFeed::Clear()
{
    m_mode = 0;
    m_name.clear();
    m_items.clear();
}

bool CSourceFeed::ReadFile(const std::string& path, std::string& out, std::string* pWhy)
{
    std::string why;
    std::error_code ec;
    std::ifstream in;
    if (std::filesystem::is_directory(path, ec)) {
        why = "is a folder";
    } else {
        errno = 0;
        in.open(path, std::ios::binary);
        if (!in)
            why = errno ? std::strerror(errno) : "cannot be opened";
    }
    if (why.empty()) {
        std::ostringstream text;
        text << in.rdbuf();
        if (in.bad())
            why = "cannot be read";
        else
            out = text.str();
    }
    if (pWhy)
        *pWhy = why;
    return why.empty();
}

bool CSourceFeed::Add(const SourceFeedItem& item)
{
    if (!m_items.empty() && item.at < m_items.back().at) {
        TTML_WARN("Feed item at %lld is before %lld", item.at, m_items.back().at);
        return false;
    }
    m_items.push_back(item);
    return true;
}

bool CSourceFeed::Load(const std::string& path)
{
    Clear();
    std::error_code ec;
    bool ok = false;
    if (std::filesystem::is_directory(path, ec)) {
        ok = m_LoadFolder(path);
    } else {
        std::string text;
        if (!ReadFile(path, text)) {
            TTML_ERROR("Feed %s: cannot read", path.c_str());
            return false;
        }
        if (LooksLikeDocument(text)) {
            ok = m_LoadDocument(path);
        } else {
            std::string baseDir = std::filesystem::path(path).parent_path().string();
            ok = LoadScript(text, path, baseDir.empty() ? "." : baseDir);
        }
    }
    if (!ok) {
        Clear();
        return false;
    }
    m_name = path;
    TTML_INFO("Feed %s: mode %d, %zu messages", path.c_str(), m_mode, m_items.size());
    return true;
}

bool CSourceFeed::m_LoadDocument(const std::string& path)
{
    SourceFeedItem start;
    start.msgId = TTML_SOURCE_MSG_START;
    SourceFeedItem doc;
    doc.msgId = TTML_SOURCE_MSG_XML_DATA;
    doc.url = path;
    if (!ReadFile(path, doc.xmlData)) {
        TTML_ERROR("Feed %s: cannot read", path.c_str());
        return false;
    }
    m_items.push_back(start);
    m_items.push_back(doc);
    return true;
}

bool CSourceFeed::m_LoadFolder(const std::string& path)
{
    std::vector<std::filesystem::path> files;
    std::error_code ec;
    std::filesystem::directory_iterator it(path, ec), end;
    for (; !ec && it != end; it.increment(ec)) {
        if (it->is_regular_file(ec) && HasDocumentExtension(it->path()))
            files.push_back(it->path());
    }
    if (ec) {
        TTML_ERROR("Feed %s: cannot read", path.c_str());
        return false;
    }
    if (files.empty()) {
        TTML_ERROR("Feed %s: no documents", path.c_str());
        return false;
    }
    std::sort(files.begin(), files.end());

    SourceFeedItem start;
    start.msgId = TTML_SOURCE_MSG_START;
    m_items.push_back(start);
    for (const auto& file : files) {
        SourceFeedItem doc;
        doc.msgId = TTML_SOURCE_MSG_XML_DATA;
        doc.url = file.string();
        if (!ReadFile(doc.url, doc.xmlData)) {
            TTML_ERROR("Feed %s: cannot read", doc.url.c_str());
            return false;
        }
        m_items.push_back(doc);
    }
    return true;
}

bool CSourceFeed::LoadScript(const std::string& text, const std::string& name, const std::string& baseDir)
{
    Clear();
    bool modeSeen = false;
    long long lastAt = 0;
    std::istringstream in(text);
    std::string line;
    int lineNo = 0;
    while (std::getline(in, line)) {
        ++lineNo;
        if (!m_ParseLine(line, lineNo, name, baseDir, modeSeen, lastAt)) {
            Clear();
            return false;
        }
    }
    if (m_items.empty()) {
        TTML_ERROR("Feed %s: no messages", name.c_str());
        Clear();
        return false;
    }
    m_name = name;
    return true;
}

bool CSourceFeed::m_ParseLine(const std::string& line, int lineNo, const std::string& name,
                              const std::string& baseDir, bool& modeSeen, long long& lastAt)
{
    std::istringstream in(line);
    std::vector<std::string> tokens;
    std::string token;
    while (in >> token)
        tokens.push_back(token);
    if (tokens.empty() || tokens[0][0] == '#')
        return true;

    size_t pos = 0;
    if (tokens[0] == "mode") {
        long long mode = 0;
        if (tokens.size() < 2) {
            FEED_ERROR("missing argument for mode");
            return false;
        }
        if (!ParseNumber(tokens[1], false, mode) || mode > 0x7fffffff) {
            FEED_ERROR("bad number \"%s\"", tokens[1].c_str());
            return false;
        }
        if (tokens.size() > 2) {
            FEED_ERROR("unexpected argument \"%s\"", tokens[2].c_str());
            return false;
        }
        if (modeSeen) {
            FEED_ERROR("mode given twice");
            return false;
        }
        modeSeen = true;
        m_mode = static_cast<int>(mode);
        return true;
    }

    SourceFeedItem item;
    item.line = lineNo;
    item.at = lastAt;
    if (tokens[0] == "at") {
        if (tokens.size() < 2) {
            FEED_ERROR("missing argument for at");
            return false;
        }
        if (!ParseNumber(tokens[1], false, item.at)) {
            FEED_ERROR("bad number \"%s\"", tokens[1].c_str());
            return false;
        }
        if (tokens.size() < 3) {
            FEED_ERROR("missing command after \"at %s\"", tokens[1].c_str());
            return false;
        }
        if (item.at < lastAt) {
            FEED_ERROR("time %lld is before %lld", item.at, lastAt);
            return false;
        }
        pos = 2;
    }

    const std::string& command = tokens[pos++];
    const CommandDef* def = nullptr;
    for (const auto& c : kCommands) {
        if (command == c.name)
            def = &c;
    }
    if (!def) {
        FEED_ERROR("unknown command \"%s\"", command.c_str());
        return false;
    }
    item.msgId = def->msgId;

    // Positional argument of the commands that need one.
    if (item.msgId == TTML_SOURCE_MSG_XML_DATA || item.msgId == TTML_SOURCE_MSG_SEEK_START ||
        item.msgId == TTML_SOURCE_MSG_FONT_ERROR) {
        if (pos >= tokens.size()) {
            FEED_ERROR("missing argument for %s", command.c_str());
            return false;
        }
        const std::string& arg = tokens[pos++];
        if (item.msgId == TTML_SOURCE_MSG_XML_DATA) {
            item.url = Resolve(arg, baseDir);
            if (!ReadFile(item.url, item.xmlData)) {
                FEED_ERROR("cannot read \"%s\"", item.url.c_str());
                return false;
            }
        } else if (item.msgId == TTML_SOURCE_MSG_SEEK_START) {
            if (!ParseNumber(arg, false, item.position)) {
                FEED_ERROR("bad number \"%s\"", arg.c_str());
                return false;
            }
        } else {
            for (const auto& font : SplitList(arg)) {
                if (font.empty()) {
                    FEED_ERROR("empty font name in \"%s\"", arg.c_str());
                    return false;
                }
                item.fonts.push_back(font);
            }
        }
    }

    // key=value options.
    for (; pos < tokens.size(); ++pos) {
        const std::string& opt = tokens[pos];
        std::string::size_type eq = opt.find('=');
        std::string key = eq == std::string::npos ? opt : opt.substr(0, eq);
        std::string value = eq == std::string::npos ? std::string() : opt.substr(eq + 1);
        bool known = eq != std::string::npos;
        if (known && item.msgId == TTML_SOURCE_MSG_START && key == "band") {
            if (value != "0" && value != "1") {
                FEED_ERROR("bad band \"%s\"", value.c_str());
                return false;
            }
            item.bandMode = value == "1";
        } else if (known && item.msgId == TTML_SOURCE_MSG_XML_DATA && key == "profile") {
            long long profile = 0;
            if (!ParseNumber(value, true, profile) || profile < TTML_PROFILE_NONE || profile > TTML_PROFILE_EBUTTD) {
                FEED_ERROR("bad profile \"%s\"", value.c_str());
                return false;
            }
            item.profile = static_cast<int>(profile);
        } else if (known && item.msgId == TTML_SOURCE_MSG_XML_DATA && key == "timestamp") {
            if (!ParseNumber(value, true, item.timeStamp)) {
                FEED_ERROR("bad number \"%s\"", value.c_str());
                return false;
            }
        } else if (known && item.msgId == TTML_SOURCE_MSG_XML_DATA && key == "segment") {
            std::vector<std::string> bounds = SplitList(value);
            long long begin = 0;
            long long end = 0;
            if (bounds.size() != 2 || !ParseNumber(bounds[0], false, begin) || !ParseNumber(bounds[1], false, end) ||
                begin > end) {
                FEED_ERROR("bad segment \"%s\"", value.c_str());
                return false;
            }
            item.segmentBegin = static_cast<unsigned long long>(begin);
            item.segmentEnd = static_cast<unsigned long long>(end);
        } else if (known && item.msgId == TTML_SOURCE_MSG_XML_DATA && key == "images") {
            item.images.clear();
            for (const auto& image : SplitList(value)) {
                std::string path = Resolve(image, baseDir);
                if (image.empty() || !IsReadable(path)) {
                    FEED_ERROR("cannot read \"%s\"", path.c_str());
                    return false;
                }
                item.images.push_back(path);
            }
            if (!CSubSampleBuilder::BuildFromFiles(item.images, item.subSampleData)) {
                FEED_ERROR("cannot pack images \"%s\"", value.c_str());
                return false;
            }
        } else if (known || item.msgId == TTML_SOURCE_MSG_START || item.msgId == TTML_SOURCE_MSG_XML_DATA) {
            FEED_ERROR("unknown option \"%s\"", opt.c_str());
            return false;
        } else {
            FEED_ERROR("unexpected argument \"%s\"", opt.c_str());
            return false;
        }
    }

    lastAt = item.at;
    m_items.push_back(item);
    return true;
}

}  // namespace TTML
