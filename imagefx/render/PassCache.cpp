#include "imagefx/render/PassCache.h"

#include <QtGui/QOpenGLContext>

#include <algorithm>
#include <iterator>

namespace ko::imagefx
{

// Never destroyed: contexts may outlive every static object, and a pass must not be deleted once
// the application has gone.
PassCache &PassCache::instance()
{
    static auto *const cache = new PassCache;
    return *cache;
}

QSharedPointer<ImageEffectPass> PassCache::find(const QString &key)
{
    const QOpenGLContext *context = QOpenGLContext::currentContext();
    const QMutexLocker lock(&m_mutex);
    const auto found = m_index.find({context, key});
    if (found == m_index.end()) {
        return {};
    }
    QSharedPointer<ImageEffectPass> pass = found->toStrongRef();
    if (!pass) {
        m_index.erase(found);
        return {};
    }
    const auto listed = std::find_if(m_recent.begin(), m_recent.end(),
                                     [&pass](const Entry &entry) { return entry.pass == pass; });
    if (listed != m_recent.end()) {
        m_recent.splice(m_recent.begin(), m_recent, listed);
    } else {
        m_recent.push_front({context, pass});
    }
    return pass;
}

void PassCache::insert(const QString &key, const QSharedPointer<ImageEffectPass> &pass)
{
    QOpenGLContext *context = QOpenGLContext::currentContext();
    std::list<Entry> dropped; // deleted behind the lock: that takes the driver's time
    const QMutexLocker lock(&m_mutex);
    watch(context);
    m_index.insert({context, key}, pass);
    m_recent.push_front({context, pass});
    while (m_recent.size() > capacity) {
        dropped.splice(dropped.begin(), m_recent, std::prev(m_recent.end()));
    }
}

void PassCache::watch(QOpenGLContext *context)
{
    if (m_watched.contains(context)) {
        return;
    }
    m_watched.insert(context);
    QObject::connect(context, &QOpenGLContext::aboutToBeDestroyed,
                     [this, context] { forget(context); });
}

void PassCache::forget(const QOpenGLContext *context)
{
    std::list<Entry> dropped;
    const QMutexLocker lock(&m_mutex);
    m_watched.remove(context);
    for (auto it = m_index.begin(); it != m_index.end();) {
        it = it.key().first == context ? m_index.erase(it) : std::next(it);
    }
    for (auto it = m_recent.begin(); it != m_recent.end();) {
        const auto entry = it++;
        if (entry->context == context) {
            dropped.splice(dropped.end(), m_recent, entry);
        }
    }
}

} // namespace ko::imagefx
