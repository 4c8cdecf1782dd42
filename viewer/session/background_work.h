// Runs work on background threads and hands each result back to the thread that owns this object.
//
// Create, use and destroy this object on one thread that has an event loop. The destructor cancels all work and waits
// until running work has ended. Each call of add() starts one more thread until there are `threadCount` threads.
#pragma once

#include <QObject>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class BackgroundWork : public QObject {
public:
    using IsCancelled = std::function<bool()>;
    // Delivers the result of work. It is called on the owner's thread, unless the work has been cancelled by then.
    using Delivery = std::function<void()>;
    // Runs on a background thread. The work must catch its exceptions, and should now and then check whether it is
    // cancelled.
    using Work = std::function<Delivery(const IsCancelled &)>;

    explicit BackgroundWork(int threadCount);
    ~BackgroundWork() override;

    // Work starts in the order in which it is added.
    void add(Work work);

    // Removes all waiting work. Running work is told that it is cancelled, and its results are discarded.
    void cancel();

    // Returns the number of results that are still to be delivered.
    int open() const { return openCount; }

protected:
    void customEvent(QEvent *event) override;

private:
    using Flag = std::shared_ptr<std::atomic<bool>>;
    template <typename Function>
    struct Entry {
        Flag cancelled;
        Function function;
    };

    void run();

    const size_t greatestThreadCount;
    Flag cancelled = std::make_shared<std::atomic<bool>>(false);
    int openCount = 0;
    std::vector<std::thread> threads;
    // Protects the members below.
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<Entry<Work>> waiting;
    std::vector<Entry<Delivery>> done;
    bool ends = false;
};
