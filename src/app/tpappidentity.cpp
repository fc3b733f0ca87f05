#include "app/tpappidentity.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>

void TPApplyAppIdentity()
{
    QCoreApplication::setOrganizationName(QString::fromLatin1(TPOrganizationName));
    QCoreApplication::setOrganizationDomain(QString::fromLatin1(TPOrganizationDomain));
    QCoreApplication::setApplicationName(QString::fromLatin1(TPApplicationName));
}

QString TPUserDefaultsDomain()
{
    QStringList labels = QCoreApplication::organizationDomain().split(u'.', Qt::SkipEmptyParts);
    std::reverse(labels.begin(), labels.end());
    labels.append(QCoreApplication::applicationName());
    return labels.join(u'.');
}
