#pragma once

#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

// Where the gallery's exports go: files with names of their own in the user's folder for pictures.
// Two galleries at once do not take the same name.
class ExportFolder : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString path READ path CONSTANT)

public:
    using QObject::QObject;
    // Gives back what was taken and never written.
    ~ExportFolder() override;

    static QString path();

    // Whether the program that exports lies beside the application's own.
    Q_INVOKABLE bool hasProgram() const;

    // Takes "name.jpg", or else "name 2.jpg" and so on, by making an empty file; makes the folder,
    // too, if there is none. An empty URL where no file can be made.
    Q_INVOKABLE QUrl take(const QString &name);
    // Removes a file that was taken, unless it has been written.
    Q_INVOKABLE void giveBack(const QUrl &file);

private:
    QStringList m_taken;
};
