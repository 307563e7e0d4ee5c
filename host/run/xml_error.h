// Why an XML file cannot be read, for people: tinyxml2 has a number for it, the daemon's log less.
#pragma once

#include <tinyxml2.h>

#include <string>

namespace tarq::host {

// What the parser found, in words that tell what is wrong rather than what was being parsed. "" for
// a success.
const char* xmlCause(tinyxml2::XMLError error);

struct XmlError {
    std::string cause;      // "" when the file is well-formed and has an element
    int line = 0;           // counted from 1; 0 when no line is at fault, as in a missing file
    std::string text = {};  // the line itself, fit to be printed, without the blanks around it

    // "NAME:LINE: CAUSE: TEXT", with what there is of them.
    std::string describe(const std::string& name) const;
};

// Reads the whole file with the parser and the settings of the daemon, so that what this finds is
// what stops the daemon. What is no plain file is an error without being read: a fifo, say, would
// keep its reader.
XmlError loadXml(const std::string& file, tinyxml2::XMLDocument* document);
// For who does not want what is in it.
XmlError findXmlError(const std::string& file);

}  // namespace tarq::host
