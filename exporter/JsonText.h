#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonValue>
#include <QtCore/QString>

#include <vector>

namespace ko::exporter
{

// How much a JSON text holds, told without building anything, so that a hostile one costs no more
// than its bytes. Texts that are no JSON give numbers, too.
struct JsonShape {
    int depth = 0;
    qint64 values = 0;
};
JsonShape shapeOf(const QByteArray &json);

// Where a byte of a text stands for an editor: both count from 1, the column in characters.
struct TextPlace {
    int line = 1;
    int column = 1;
};
TextPlace placeOf(const QByteArray &text, int offset);
// The place of byte `to` when that of byte `from`, before it, is known.
TextPlace advanced(TextPlace place, const QByteArray &text, int from, int to);

// A JSON value with its places in the text. Keeps what QJsonValue loses: the order of keys, keys
// that are given twice, and where everything stands.
struct JsonNode {
    // As Qt reads it; empty for arrays and objects, whose parts are in `children`.
    QJsonValue value;
    QJsonValue::Type type = QJsonValue::Undefined;
    // As it stands in the text; for numbers, texts and words.
    QByteArray token;
    int offset = 0;
    // Of a member of an object.
    QString key;
    int keyOffset = 0;
    std::vector<JsonNode> children;
};

// The tree of a text that QJsonDocument accepts. Recursive: to be called for a text whose depth is
// known to be small.
JsonNode parseJsonTree(const QByteArray &json);

} // namespace ko::exporter
