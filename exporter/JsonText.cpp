#include "exporter/JsonText.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cstring>

namespace ko::exporter
{

namespace
{

constexpr char byteOrderMark[] = "\xef\xbb\xbf";

// The value of one number, text or word, read by the parser that reads the whole stack.
QJsonValue scalar(const QByteArray &token)
{
    return QJsonDocument::fromJson('[' + token + ']').array().at(0);
}

// Behind the closing quote of the text that opens at `offset`.
int endOfString(const QByteArray &json, int offset)
{
    for (int i = offset + 1; i < json.size(); ++i) {
        if (json.at(i) == '\\') {
            ++i;
        } else if (json.at(i) == '"') {
            return i + 1;
        }
    }
    return json.size();
}

class TreeParser
{
public:
    explicit TreeParser(const QByteArray &json) : m_json(json)
    {
        if (json.startsWith(byteOrderMark)) {
            m_offset = 3;
        }
    }

    JsonNode parseValue()
    {
        skipBlanks();
        JsonNode node;
        node.offset = m_offset;
        const char first = current();
        if (first == '[' || first == '{') {
            parseChildren(first == '{', &node);
            return node;
        }
        node.token = takeToken();
        node.value = scalar(node.token);
        node.type = node.value.type();
        return node;
    }

private:
    char current() const { return m_offset < m_json.size() ? m_json.at(m_offset) : '\0'; }

    void skipBlanks()
    {
        while (current() == ' ' || current() == '\n' || current() == '\r' || current() == '\t') {
            ++m_offset;
        }
    }

    QByteArray takeToken()
    {
        const int begin = m_offset;
        if (current() == '"') {
            m_offset = endOfString(m_json, m_offset);
            return m_json.mid(begin, m_offset - begin);
        }
        while (m_offset < m_json.size() && std::strchr(",]}: \n\r\t", current()) == nullptr) {
            ++m_offset;
        }
        return m_json.mid(begin, m_offset - begin);
    }

    void parseChildren(bool object, JsonNode *node)
    {
        node->type = object ? QJsonValue::Object : QJsonValue::Array;
        const char close = object ? '}' : ']';
        ++m_offset;
        skipBlanks();
        while (m_offset < m_json.size() && current() != close) {
            const int before = m_offset;
            QString key;
            if (object) {
                key = scalar(takeToken()).toString();
                skipBlanks();
                ++m_offset;
            }
            JsonNode child = parseValue();
            child.key = key;
            child.keyOffset = before;
            node->children.push_back(std::move(child));
            skipBlanks();
            if (current() == ',') {
                ++m_offset;
                skipBlanks();
            }
            if (m_offset == before) {
                // No JSON after all; what was read so far must do.
                break;
            }
        }
        ++m_offset;
    }

    const QByteArray &m_json;
    int m_offset = 0;
};

} // namespace

JsonShape shapeOf(const QByteArray &json)
{
    JsonShape shape;
    int depth = 0;
    for (int i = 0; i < json.size(); ++i) {
        switch (json.at(i)) {
        case '"':
            i = endOfString(json, i) - 1;
            break;
        case '[':
        case '{':
            shape.depth = std::max(shape.depth, ++depth);
            ++shape.values;
            break;
        case ']':
        case '}':
            --depth;
            break;
        case ',':
            ++shape.values;
            break;
        default:
            break;
        }
    }
    return shape;
}

TextPlace placeOf(const QByteArray &text, int offset)
{
    return advanced(TextPlace(), text, 0, offset);
}

TextPlace advanced(TextPlace place, const QByteArray &text, int from, int to)
{
    const int begin = from == 0 && text.startsWith(byteOrderMark) ? 3 : from;
    const int end = std::min(to, text.size());
    for (int i = begin; i < end; ++i) {
        if (text.at(i) == '\n') {
            ++place.line;
            place.column = 1;
        } else if ((uchar(text.at(i)) & 0xc0) != 0x80) {
            ++place.column;
        }
    }
    return place;
}

JsonNode parseJsonTree(const QByteArray &json)
{
    return TreeParser(json).parseValue();
}

} // namespace ko::exporter
