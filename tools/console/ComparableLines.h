#pragma once

#include <map>
#include <string>
#include <string_view>

// One side of two conversations that are to be compared: the lines, without what is another in every conversation. A
// document is called by the path at which it was opened, and an item by the first path that was told of it.
class ComparableLines {
public:
    // An envelope in a form that is the same on both sides.
    std::string comparable(std::string_view envelopeLine);

    // The common name of a document, and the identifier that this side has for one.
    std::string documentName(const std::string& documentID) const;
    std::string documentID(const std::string& documentName) const;

private:
    std::string nodeName(const std::string& nodeID, const std::string& path);
    std::string newDocumentName(const std::string& documentID, const std::string& path);

    std::map<std::string, std::string> namesByNodeID{};
    std::map<std::string, std::string> namesByDocumentID{};
    std::map<std::string, std::string> documentIDsByName{};
};

// The line with one folder's path in place of another's.
std::string withFolder(std::string line, const std::string& from, const std::string& to);
