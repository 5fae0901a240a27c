#pragma once

#include <QtCore/QObject>

namespace ko::imagefx
{

// Tells the owner of a list of plain pointers when a listed object is destroyed, so that the list
// can drop it before anything reads it. The guard is a receiver of its own: cutting the connections
// from an object to the list's owner does not blind it.
class ListGuard : public QObject
{
    Q_OBJECT

public:
    // Watching the same object twice reports it once.
    void watch(QObject *object);

Q_SIGNALS:
    // `object` is past its destructor: compare the pointer, do not use it.
    void objectDestroyed(QObject *object);
};

// Drops every entry of `list` that points to `destroyed`; true when there was one.
template <class T>
bool removeDestroyed(QList<T *> &list, const QObject *destroyed)
{
    bool removed = false;
    for (int i = list.size() - 1; i >= 0; --i) {
        if (static_cast<const QObject *>(list.at(i)) == destroyed) {
            list.removeAt(i);
            removed = true;
        }
    }
    return removed;
}

} // namespace ko::imagefx
