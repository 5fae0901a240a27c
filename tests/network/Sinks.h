#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QIODevice>

#include <functional>

// Takes `capacity` bytes and then writes short. Random access, but of no kind that can be emptied.
class SmallSink : public QIODevice
{
    Q_OBJECT

public:
    explicit SmallSink(int capacity) : m_capacity(capacity) { open(WriteOnly); }
    const QByteArray &content() const { return m_content; }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        const int taken = int(qMin<qint64>(size, m_capacity - m_content.size()));
        m_content.append(data, taken);
        return taken;
    }

private:
    const int m_capacity;
    QByteArray m_content;
};

// A pipe: what is written has left.
class PipeSink : public SmallSink
{
    Q_OBJECT

public:
    PipeSink() : SmallSink(100000000) {}
    bool isSequential() const override { return true; }
};

// Does something whenever it is written to, and takes it all.
class HookedSink : public QIODevice
{
    Q_OBJECT

public:
    explicit HookedSink(std::function<void()> hook) : m_hook(std::move(hook)) { open(WriteOnly); }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 size) override
    {
        m_hook();
        return size;
    }

private:
    const std::function<void()> m_hook;
};
