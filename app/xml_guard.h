// Reads the small XML files of the installation, written by hand and edited on the spot, so that
// none of them brings the application down, whatever it holds.
#pragma once

#include <QString>

#include <string>

class TiXmlDocument;

/// Parses the file into the document. Empty on success, else what is wrong, for the log: not a
/// readable file, nested too deeply for the parser, or the parser's own complaint. Any thread.
[[nodiscard]] std::string readXmlFile(const QString& path, TiXmlDocument& document);
