#include "exporter/StackCheck.h"

#include "exporter/ErrorCapture.h"
#include "exporter/OptionTable.h"
#include "exporter/TableUrl.h"

#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/model/EffectRegistry.h"
#include "imagefx/model/ImageEffect.h"

#include <QtCore/QMetaEnum>
#include <QtCore/QMetaProperty>
#include <QtCore/QSet>
#include <QtGui/QColor>

#include <algorithm>
#include <cmath>
#include <memory>

namespace ko::exporter
{

using imagefx::AlphaGradientStop;
using imagefx::AlphaMask;
using imagefx::EffectRegistry;
using imagefx::ImageEffect;
using imagefx::LookupTableImageEffect;

namespace
{

using Type = PropertyDescription::Type;

QString jsonTypeName(const JsonNode &node)
{
    switch (node.type) {
    case QJsonValue::Bool:
        return QString::fromLatin1(node.token);
    case QJsonValue::Double:
        return QStringLiteral("a number");
    case QJsonValue::String:
        return QStringLiteral("a text");
    case QJsonValue::Array:
        return QStringLiteral("an array");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    default:
        return QStringLiteral("null");
    }
}

struct Expectation {
    QJsonValue::Type type;
    const char *text;
};

Expectation expectation(Type type)
{
    switch (type) {
    case Type::Boolean:
        return {QJsonValue::Bool, "true or false"};
    case Type::Number:
        return {QJsonValue::Double, "a number"};
    case Type::Enumeration:
        return {QJsonValue::Double, "the number of an enumerator"};
    case Type::String:
        return {QJsonValue::String, "a text"};
    case Type::Color:
        return {QJsonValue::String, "a colour as \"#rrggbb\""};
    case Type::Url:
        return {QJsonValue::String, "a URL"};
    case Type::Mask:
        return {QJsonValue::Object, "a mask or null"};
    case Type::Effects:
        return {QJsonValue::Array, "an array of effects"};
    case Type::Stops:
        break;
    }
    return {QJsonValue::Array, "an array of stops"};
}

QStringList propertyNames(const QObject *object)
{
    QStringList names;
    const QMetaObject *meta = object->metaObject();
    for (int i = QObject::staticMetaObject.propertyCount(); i < meta->propertyCount(); ++i) {
        if (!meta->property(i).isConstant()) {
            names.append(QString::fromLatin1(meta->property(i).name()));
        }
    }
    return names;
}

QString suggestion(const QString &unknown, const QStringList &known)
{
    const QString meant = nearestWord(unknown, known);
    return meant.isEmpty() ? QString() : QStringLiteral("; did you mean \"%1\"?").arg(meant);
}

QString shown(const QString &text)
{
    constexpr int longest = 100;
    return text.size() > longest ? text.left(longest) + QStringLiteral("...") : text;
}

// A key in a path: as it is when it is a plain word.
QString memberPath(const QString &path, const QString &key)
{
    const bool plain = !key.isEmpty() && std::all_of(key.begin(), key.end(), [](QChar c) {
        return c.unicode() < 128 && (c.isLetterOrNumber() || c == QLatin1Char('_'));
    });
    return plain ? path + QLatin1Char('.') + key
                 : path + QStringLiteral("[\"%1\"]").arg(shown(key));
}

QString elementPath(const QString &path, size_t index)
{
    return path + QStringLiteral("[%1]").arg(index);
}

} // namespace

StackCheck::StackCheck(const QString &folder)
    : m_folder(folder), m_registry(std::make_unique<EffectRegistry>(EffectRegistry::complete()))
{
}

StackCheck::~StackCheck() = default;

QVector<StackMistake> StackCheck::check(const QByteArray &text)
{
    // Effects tell of tables that they cannot load.
    const ErrorCapture capture;
    m_text = text;
    m_mistakes.clear();
    checkEffects(parseJsonTree(text), QStringLiteral("$"));
    placeMistakes();
    return m_mistakes;
}

void StackCheck::checkEffects(const JsonNode &array, const QString &path)
{
    for (size_t i = 0; i < array.children.size(); ++i) {
        const JsonNode &node = array.children[i];
        if (node.type == QJsonValue::Object) {
            checkEffect(node, elementPath(path, i));
        } else {
            report(elementPath(path, i), node.offset,
                   QStringLiteral("an effect is an object, not %1").arg(jsonTypeName(node)));
        }
    }
}

void StackCheck::checkEffect(const JsonNode &node, const QString &path)
{
    const QString id = idOf(node, "effectId", path, m_registry->effectIds());
    const std::unique_ptr<ImageEffect> effect(m_registry->createEffect(id));
    if (effect != nullptr) {
        checkMembers(node, effect.get(), "effectId", path);
    }
}

void StackCheck::checkMask(const JsonNode &node, const QString &path)
{
    const QString id = idOf(node, "maskId", path, m_registry->maskIds());
    const std::unique_ptr<AlphaMask> mask(m_registry->createAlphaMask(id));
    if (mask != nullptr) {
        checkMembers(node, mask.get(), "maskId", path);
    }
}

void StackCheck::checkStops(const JsonNode &array, const QString &path)
{
    for (size_t i = 0; i < array.children.size(); ++i) {
        const JsonNode &node = array.children[i];
        const QString stopPath = elementPath(path, i);
        if (node.type != QJsonValue::Object) {
            report(stopPath, node.offset,
                   QStringLiteral("a stop is an object, not %1").arg(jsonTypeName(node)));
            continue;
        }
        AlphaGradientStop stop;
        checkMembers(node, &stop, nullptr, stopPath);
        const QStringList names = propertyNames(&stop);
        for (const QString &name : names) {
            const bool given =
                std::any_of(node.children.begin(), node.children.end(),
                            [&](const JsonNode &member) { return member.key == name; });
            if (!given) {
                report(stopPath, node.offset,
                       QStringLiteral("a stop without \"%1\" has 0 there").arg(name));
            }
        }
    }
}

// The id that the reader takes: the last one. Empty when there is none.
QString StackCheck::idOf(const JsonNode &object, const char *key, const QString &path,
                         const QStringList &known)
{
    const JsonNode *id = nullptr;
    for (const JsonNode &member : object.children) {
        if (member.key == QLatin1String(key)) {
            id = &member;
        }
    }
    if (id == nullptr) {
        report(path, object.offset, QStringLiteral("\"%1\" is missing").arg(QLatin1String(key)));
        return {};
    }
    const QString idPath = memberPath(path, id->key);
    if (id->type != QJsonValue::String) {
        report(idPath, id->offset, QStringLiteral("%1 is no id").arg(jsonTypeName(*id)));
        return {};
    }
    QString value = id->value.toString();
    if (!known.contains(value)) {
        report(idPath, id->offset,
               QStringLiteral("unknown kind \"%1\"%2").arg(shown(value), suggestion(value, known)));
    }
    return value;
}

void StackCheck::checkMembers(const JsonNode &object, QObject *target, const char *idKey,
                              const QString &path)
{
    const QStringList names = propertyNames(target);
    QSet<QString> seen;
    for (const JsonNode &member : object.children) {
        const QString memberAt = memberPath(path, member.key);
        if (seen.contains(member.key)) {
            report(memberAt, member.keyOffset,
                   QStringLiteral("the key is given twice; only one of them counts"));
        }
        seen.insert(member.key);
        if (idKey != nullptr && member.key == QLatin1String(idKey)) {
            continue;
        }
        if (!names.contains(member.key)) {
            report(memberAt, member.keyOffset,
                   QStringLiteral("unknown key \"%1\"%2")
                       .arg(shown(member.key), suggestion(member.key, names)));
            continue;
        }
        const QMetaObject *meta = target->metaObject();
        checkMember(member, target,
                    meta->property(meta->indexOfProperty(member.key.toLatin1().constData())),
                    memberAt);
    }
}

void StackCheck::checkMember(const JsonNode &member, QObject *target, const QMetaProperty &property,
                             const QString &path)
{
    const Type type = *propertyType(property);
    const Expectation expected = expectation(type);
    if (type == Type::Mask && member.type == QJsonValue::Null) {
        return;
    }
    if (member.type != expected.type) {
        report(path, member.offset,
               QStringLiteral("%1 where %2 is expected")
                   .arg(jsonTypeName(member), QLatin1String(expected.text)));
        return;
    }
    switch (type) {
    case Type::Number:
        checkNumber(member, target, property, path);
        break;
    case Type::Enumeration:
        checkEnumerator(member, property, path);
        break;
    case Type::Color:
        if (!QColor(member.value.toString()).isValid()) {
            report(path, member.offset,
                   QStringLiteral("\"%1\" is no colour").arg(shown(member.value.toString())));
        }
        break;
    case Type::Url:
        checkTable(member, target, path);
        break;
    case Type::Mask:
        checkMask(member, path);
        break;
    case Type::Effects:
        checkEffects(member, path);
        break;
    case Type::Stops:
        checkStops(member, path);
        break;
    case Type::Boolean:
    case Type::String:
        break;
    }
}

void StackCheck::checkNumber(const JsonNode &member, QObject *target, const QMetaProperty &property,
                             const QString &path)
{
    const auto number = float(member.value.toDouble());
    const QString token = shown(QString::fromLatin1(member.token));
    if (!std::isfinite(number)) {
        report(path, member.offset,
               QStringLiteral("%1 is beyond the numbers that can be held").arg(token));
        return;
    }
    property.write(target, number);
    const float stored = property.read(target).toFloat();
    // A value that equals the stored one but for rounding is not stored anew.
    constexpr float rounding = 1e-5F;
    if (std::abs(stored - number) > rounding * std::max(1.0F, std::abs(number))) {
        report(path, member.offset,
               QStringLiteral("%1 is out of range; it becomes %2")
                   .arg(token, QString::number(double(stored), 'g', 7)));
    }
}

void StackCheck::checkEnumerator(const JsonNode &member, const QMetaProperty &property,
                                 const QString &path)
{
    const double number = member.value.toDouble();
    const QMetaEnum enumeration = property.enumerator();
    const bool whole = number == std::floor(number) && std::abs(number) < 1e6;
    if (!whole || enumeration.valueToKey(int(number)) == nullptr) {
        int last = 0;
        for (int i = 0; i < enumeration.keyCount(); ++i) {
            last = std::max(last, enumeration.value(i));
        }
        report(path, member.offset,
               QStringLiteral("%1 is no %2; they are 0 to %3")
                   .arg(shown(QString::fromLatin1(member.token)),
                        QString::fromLatin1(enumeration.name()), QString::number(last)));
    }
}

void StackCheck::checkTable(const JsonNode &member, QObject *target, const QString &path)
{
    auto *grade = qobject_cast<LookupTableImageEffect *>(target);
    const QString text = member.value.toString();
    if (grade == nullptr || text.isEmpty()) {
        return;
    }
    grade->setTable(tableUrl(text, m_folder));
    if (grade->lut().isNull()) {
        report(path, member.offset,
               QStringLiteral("the table \"%1\" cannot be loaded; it is a picture of 256 x 1 "
                              "pixels")
                   .arg(shown(text)));
    }
}

void StackCheck::report(const QString &path, int offset, const QString &message)
{
    m_mistakes.append({path, offset, TextPlace(), message});
}

// In one walk over the text, however many they are.
void StackCheck::placeMistakes()
{
    std::stable_sort(
        m_mistakes.begin(), m_mistakes.end(),
        [](const StackMistake &a, const StackMistake &b) { return a.offset < b.offset; });
    TextPlace place;
    int offset = 0;
    for (StackMistake &mistake : m_mistakes) {
        place = advanced(place, m_text, offset, mistake.offset);
        offset = mistake.offset;
        mistake.place = place;
    }
}

} // namespace ko::exporter
