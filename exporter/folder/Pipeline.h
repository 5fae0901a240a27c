#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace ko::exporter
{

// A piece of work in three steps, each called once, one after the other, from different threads. A
// step that returns false is the last one. None may throw.
class PipelineJob
{
public:
    virtual ~PipelineJob() = default;
    virtual bool load() = 0;
    virtual bool render() = 0;
    virtual void save() = 0;
};

// Takes jobs through their steps: load() and save() on worker threads, render() on the thread that
// calls run(). A worker that is free saves before it loads, so that what is finished leaves memory
// first; it never waits while there is something that it may do.
class Pipeline
{
public:
    using NextJob = std::function<std::unique_ptr<PipelineJob>()>;

    // `threads`: workers, at least 1. At most `limit` jobs exist at a time.
    Pipeline(int threads, int limit);

    // Returns when all jobs are over. `next` makes a job, and null when there are no more; it is
    // called from any thread, but never twice at a time. To be called once.
    void run(const NextJob &next);
    // Begins no further job and drops those that are not rendered yet; run() then returns as soon
    // as the steps under way and the last saves are over. From any thread, at any time.
    void stop();

private:
    using Job = std::unique_ptr<PipelineJob>;
    using Lock = std::unique_lock<std::mutex>;

    void work(const NextJob &next);
    void renderAll();
    void load(Lock &lock, const NextJob &next);
    void save(Lock &lock);
    void end(Lock &lock, Job job);
    bool mayBegin() const { return !m_stopped && !m_noMore && m_count < m_limit; }
    bool isOver() const { return m_count == 0 && (m_stopped || m_noMore); }

    const int m_threads;
    const int m_limit;
    std::mutex m_mutex;
    // One for all: events are rare beside the work that they announce.
    std::condition_variable m_changed;
    std::deque<Job> m_toRender;
    std::deque<Job> m_toSave;
    // Of jobs that exist.
    int m_count = 0;
    bool m_noMore = false;
    bool m_stopped = false;
};

} // namespace ko::exporter
