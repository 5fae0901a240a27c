#include "imagefx/model/ListGuard.h"

namespace ko::imagefx
{

void ListGuard::watch(QObject *object)
{
    connect(object, &QObject::destroyed, this, &ListGuard::objectDestroyed,
            Qt::ConnectionType(Qt::DirectConnection | Qt::UniqueConnection));
}

} // namespace ko::imagefx
