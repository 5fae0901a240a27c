#pragma once

#include <QtCore/QObject>
#include <QtCore/QStringList>

namespace ko::imagefx::test
{

// Records in which order signals come.
class SignalOrder : public QObject
{
public:
    template <class Object, class Base>
    void listen(Object *object, void (Base::*signal)(), const char *name)
    {
        connect(object, signal, this, [this, name] { m_names.append(QLatin1String(name)); });
    }

    // The names of the signals since the last call, with blanks between them.
    QString taken()
    {
        QString names = m_names.join(QLatin1Char(' '));
        m_names.clear();
        return names;
    }

private:
    QStringList m_names;
};

} // namespace ko::imagefx::test
