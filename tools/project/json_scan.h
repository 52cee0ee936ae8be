// A first look at JSON bytes for what QJsonDocument lets pass: how deep they nest and keys
// given twice. Private to this folder.
#ifndef TAVMIR_PROJECT_JSON_SCAN_H
#define TAVMIR_PROJECT_JSON_SCAN_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace tavmir::project
{

struct TextPlace {
    int line = 1;   // from 1
    int column = 1; // from 1, in bytes
};

TextPlace placeOf(const QByteArray& text, int offset);

struct JsonScan {
    int offset = -1; // of what is wrong, -1: nothing found
    QString problem;
};

// Any bytes are safe. Malformed JSON is left to the parser proper. Costs the text once.
JsonScan scanJson(const QByteArray& text, int maxNesting);

} // namespace tavmir::project

#endif
