// The parser tells which kind of mistake it met, and the line where it gave up, which for an
// element that is not closed is the line where that begins. Whatever cannot be opened and read as a
// plain file has a cause from the system instead, and no line.
#include "host/run/xml_error.h"

#include <errno.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "host/run/text.h"

namespace tarq::host {

// The parser's own names of its errors say what it was doing. These say what the author of the file
// has to look for.
const char* xmlCause(tinyxml2::XMLError error) {
    switch (error) {
        case tinyxml2::XML_SUCCESS:
            return "";
        case tinyxml2::XML_ERROR_FILE_NOT_FOUND:
            return strerror(ENOENT);
        case tinyxml2::XML_ERROR_PARSING_ELEMENT:
            return "a tag is not complete, its \">\" or a quote is missing";
        case tinyxml2::XML_ERROR_PARSING_ATTRIBUTE:
            return "an attribute is not NAME=\"VALUE\", or is there twice";
        case tinyxml2::XML_ERROR_PARSING_TEXT:
            return "text has no end tag, or stands outside of the root element";
        case tinyxml2::XML_ERROR_PARSING_CDATA:
            return "\"<![CDATA[\" has no \"]]>\"";
        case tinyxml2::XML_ERROR_PARSING_COMMENT:
            return "a comment has no \"-->\"";
        case tinyxml2::XML_ERROR_PARSING_DECLARATION:
            return "\"<?\" has no \"?>\", or does not begin the file";
        case tinyxml2::XML_ERROR_PARSING_UNKNOWN:
            return "\"<!\" has no \">\"";
        case tinyxml2::XML_ERROR_EMPTY_DOCUMENT:
            return "the file is empty";
        case tinyxml2::XML_ERROR_MISMATCHED_ELEMENT:
            return "an element is not closed by an end tag of its name";
        case tinyxml2::XML_ELEMENT_DEPTH_EXCEEDED:
            return "elements are nested too deeply";
        default:
            return "this is no XML";
    }
}

// The line without the blanks around it, cut where it would fill more than a line of a terminal.
static std::string lineOf(const std::string& content, int number) {
    size_t begin = 0;
    for (int i = 1; i < number; ++i) begin = content.find('\n', begin) + 1;
    constexpr size_t kMaxShown = 100;
    const std::string line = content.substr(begin, content.find('\n', begin) - begin);
    const size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos) return "";
    const size_t size = line.find_last_not_of(" \t\r") + 1 - first;
    return escaped(line.substr(first, std::min(size, kMaxShown))) + (size > kMaxShown ? "…" : "");
}

// False, and errno, when it cannot be read. What is no plain file could keep its reader waiting.
static bool readWhole(const std::string& file, std::string* content) {
    struct stat status = {};
    if (stat(file.c_str(), &status) != 0) return false;
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    if (!S_ISREG(status.st_mode)) return false;
    std::ifstream in(file, std::ios::binary);
    content->assign(std::istreambuf_iterator<char>(in), {});
    return in.is_open() && !in.bad();
}

XmlError loadXml(const std::string& file, tinyxml2::XMLDocument* document) {
    std::string content;
    if (!readWhole(file, &content)) return {strerror(errno)};
    const tinyxml2::XMLError error = document->Parse(content.data(), content.size());
    if (error == tinyxml2::XML_SUCCESS && document->RootElement() == nullptr) {
        return {"there is no element in it"};
    }
    const int line = document->ErrorLineNum();
    return {xmlCause(error), line, line > 0 ? lineOf(content, line) : ""};
}

XmlError findXmlError(const std::string& file) {
    tinyxml2::XMLDocument document;
    return loadXml(file, &document);
}

std::string XmlError::describe(const std::string& name) const {
    return name + ":" + (line > 0 ? std::to_string(line) + ":" : "") + " " + cause +
           (text.empty() ? "" : ": " + text);
}

}  // namespace tarq::host
