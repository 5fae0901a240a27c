#include "exporter/folder/Pipeline.h"

#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace ko::exporter
{

namespace
{

template <class Jobs>
auto takeFirst(Jobs *jobs)
{
    auto job = std::move(jobs->front());
    jobs->pop_front();
    return job;
}

} // namespace

Pipeline::Pipeline(int threads, int limit) : m_threads(threads), m_limit(limit) {}

void Pipeline::run(const NextJob &next)
{
    std::vector<std::thread> workers;
    try {
        for (int i = 0; i < m_threads; ++i) {
            workers.emplace_back([this, &next] { work(next); });
        }
    } catch (const std::system_error &) {
        // A limit on threads; those that there are do the work.
        if (workers.empty()) {
            throw;
        }
    }
    renderAll();
    for (std::thread &worker : workers) {
        worker.join();
    }
}

void Pipeline::stop()
{
    {
        const Lock lock(m_mutex);
        m_stopped = true;
    }
    m_changed.notify_all();
}

void Pipeline::work(const NextJob &next)
{
    Lock lock(m_mutex);
    while (!isOver()) {
        if (!m_toSave.empty()) {
            save(lock);
        } else if (mayBegin()) {
            load(lock, next);
        } else {
            m_changed.wait(lock);
        }
    }
}

void Pipeline::load(Lock &lock, const NextJob &next)
{
    Job job = next();
    if (!job) {
        m_noMore = true;
        m_changed.notify_all();
        return;
    }
    ++m_count;
    lock.unlock();
    const bool goesOn = job->load();
    lock.lock();
    if (!goesOn) {
        end(lock, std::move(job));
        return;
    }
    m_toRender.push_back(std::move(job));
    m_changed.notify_all();
}

void Pipeline::save(Lock &lock)
{
    Job job = takeFirst(&m_toSave);
    lock.unlock();
    job->save();
    lock.lock();
    end(lock, std::move(job));
}

// The memory is free before another job may take its place.
void Pipeline::end(Lock &lock, Job job)
{
    lock.unlock();
    job.reset();
    lock.lock();
    --m_count;
    m_changed.notify_all();
}

void Pipeline::renderAll()
{
    Lock lock(m_mutex);
    while (!isOver()) {
        if (m_toRender.empty()) {
            m_changed.wait(lock);
            continue;
        }
        Job job = takeFirst(&m_toRender);
        if (m_stopped) {
            end(lock, std::move(job));
            continue;
        }
        lock.unlock();
        const bool goesOn = job->render();
        lock.lock();
        if (!goesOn) {
            end(lock, std::move(job));
            continue;
        }
        m_toSave.push_back(std::move(job));
        m_changed.notify_all();
    }
}

} // namespace ko::exporter
