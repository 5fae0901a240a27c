#include "engine/ThreadPool.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <thread>

#include <sched.h>

namespace ko::imagefx::engine
{

namespace
{

// How long an idle thread looks for work before it sleeps. The next stage of a picture usually
// follows sooner than a sleeper would wake.
constexpr std::chrono::microseconds patience{100};
constexpr int looksAtOnce = 16; // between two looks at the clock

void pauseProcessor()
{
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

template <class Condition>
bool spinUntil(const Condition &condition)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    do {
        for (int i = 0; i < looksAtOnce; ++i) {
            if (condition()) {
                return true;
            }
            pauseProcessor();
        }
        std::this_thread::yield(); // to those who decode and encode
    } while (std::chrono::steady_clock::now() < end);
    return condition();
}

constexpr int mostShares = 64;

// Of the calls of a job, a stretch for one thread.
struct alignas(64) Share {
    std::atomic<int> next;
    int end;
};

// One call of runParallel(), on its caller's stack.
struct Job {
    Job(const std::function<void(int)> &function, int calls, int mostWorkers)
        : work(function), shareCount(std::min(mostWorkers + 1, mostShares)), places(mostWorkers)
    {
        for (int i = 0; i < shareCount; ++i) {
            Share &share = shares.at(size_t(i));
            share.next.store(begin(calls, i), std::memory_order_relaxed);
            share.end = begin(calls, i + 1);
        }
    }

    // Its own share first, where it finds in its cache what it made of that part of the picture
    // before; then what the others have left.
    void takePart(int thread)
    {
        for (int i = 0; i < shareCount; ++i) {
            Share &share = shares.at(size_t((thread + i) % shareCount));
            for (;;) {
                const int index = share.next.fetch_add(1, std::memory_order_relaxed);
                if (index >= share.end) {
                    break;
                }
                work(index);
            }
        }
    }

    bool isOpen() const
    {
        const auto isLeft = [](const Share &share) {
            return share.next.load(std::memory_order_relaxed) < share.end;
        };
        return places > 0 && std::any_of(shares.begin(), shares.begin() + shareCount, isLeft);
    }

    int begin(int calls, int share) const { return int(int64_t(calls) * share / shareCount); }

    // In an order that leaves little room between them.
    std::array<Share, mostShares> shares;
    const std::function<void(int)> &work;
    Job *following = nullptr;
    const int shareCount;
    // Workers that take part. The one that leaves does not touch the job afterwards.
    std::atomic<int> workers{0};
    // Workers that may still come; guarded by the pool's mutex, as is the list.
    int places;
};

class Pool
{
public:
    static Pool &instance();

    void run(Job &job, const std::function<void()> &errand);

private:
    std::unique_lock<std::mutex> locked();
    void grow(int needed);
    void serve(int number);
    Job *openJob() const;
    void close(const Job &job);

    std::mutex m_mutex;
    std::condition_variable m_jobCame;
    std::condition_variable m_workersLeft;
    Job *m_jobs = nullptr;
    // Changes with every new job, for those who spin.
    std::atomic<unsigned> m_jobNumber{0};
    int m_workers = 0;
    int m_placesOffered = 0;
};

// Never destroyed, and its threads are never joined: they sleep until the process has gone. The
// library stays loaded (it is linked as undeletable), so their code does not vanish under them.
Pool &Pool::instance()
{
    static auto &pool = *new Pool;
    return pool;
}

// Nobody holds the mutex for longer than it takes to try again some times, and to be woken takes
// long.
std::unique_lock<std::mutex> Pool::locked()
{
    std::unique_lock<std::mutex> lock(m_mutex, std::defer_lock);
    for (int i = 0; i < looksAtOnce && !lock.try_lock(); ++i) {
        pauseProcessor();
    }
    if (!lock.owns_lock()) {
        lock.lock();
    }
    return lock;
}

void Pool::run(Job &job, const std::function<void()> &errand)
{
    const int places = job.places;
    {
        const std::unique_lock<std::mutex> lock = locked();
        m_placesOffered += places;
        grow(std::min(m_placesOffered, std::max(places, usableProcessors())));
        job.following = m_jobs;
        m_jobs = &job;
        m_jobNumber.fetch_add(1, std::memory_order_release);
    }
    if (places == 1) {
        m_jobCame.notify_one();
    } else {
        m_jobCame.notify_all();
    }
    if (errand) {
        errand();
    }
    job.takePart(0);
    {
        const std::unique_lock<std::mutex> lock = locked();
        m_placesOffered -= places;
        close(job);
    }
    const auto allLeft = [&job] { return job.workers.load(std::memory_order_acquire) == 0; };
    if (!spinUntil(allLeft)) {
        std::unique_lock<std::mutex> lock = locked();
        m_workersLeft.wait(lock, allLeft);
    }
}

void Pool::grow(int needed)
{
    while (m_workers < needed) {
        try {
            std::thread([this, number = m_workers + 1] { serve(number); }).detach();
        } catch (const std::exception &) {
            return; // no thread, or no memory for one: the caller works with those that there are
        }
        ++m_workers;
    }
}

void Pool::serve(int number)
{
    std::unique_lock<std::mutex> lock = locked();
    for (;;) {
        Job *job = openJob();
        if (job == nullptr) {
            const unsigned seen = m_jobNumber.load(std::memory_order_relaxed);
            lock.unlock();
            // A job that came and went without this thread tells that more are on their way.
            const bool jobCame = spinUntil(
                [this, seen] { return m_jobNumber.load(std::memory_order_acquire) != seen; });
            lock = locked();
            if (!jobCame) {
                m_jobCame.wait(lock, [this] { return openJob() != nullptr; });
            }
            continue;
        }
        --job->places;
        job->workers.fetch_add(1, std::memory_order_relaxed);
        lock.unlock();
        job->takePart(number);
        const bool isLast = job->workers.fetch_sub(1, std::memory_order_acq_rel) == 1;
        lock = locked();
        if (isLast) {
            m_workersLeft.notify_all();
        }
    }
}

Job *Pool::openJob() const
{
    Job *job = m_jobs;
    while (job != nullptr && !job->isOpen()) {
        job = job->following;
    }
    return job;
}

void Pool::close(const Job &job)
{
    Job **link = &m_jobs;
    while (*link != &job) {
        link = &(*link)->following;
    }
    *link = job.following;
}

} // namespace

int usableProcessors()
{
    // Counted once: a pool does not shrink.
    static const int count = [] {
        cpu_set_t set;
        CPU_ZERO(&set);
        if (sched_getaffinity(0, sizeof set, &set) == 0) {
            return std::max(1, CPU_COUNT(&set));
        }
        // More processors than the set has room for.
        return std::max(1, int(std::thread::hardware_concurrency()));
    }();
    return count;
}

void runParallel(int threads, int count, const std::function<void(int)> &work,
                 const std::function<void()> &errand)
{
    // With an errand there is something to do for two even if there is but one call.
    const int workers = std::min(threads - 1, errand ? count : count - 1);
    if (workers < 1) {
        if (errand) {
            errand();
        }
        for (int i = 0; i < count; ++i) {
            work(i);
        }
        return;
    }
    Job job(work, count, workers);
    Pool::instance().run(job, errand);
}

} // namespace ko::imagefx::engine
