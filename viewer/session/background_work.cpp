#include "viewer/session/background_work.h"

#include <QCoreApplication>
#include <QEvent>
#include <utility>

BackgroundWork::BackgroundWork(int threadCount) : greatestThreadCount(size_t(threadCount)) {}

BackgroundWork::~BackgroundWork() {
    cancel();
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ends = true;
    }
    wake.notify_all();
    for (std::thread &thread : threads) {
        thread.join();
    }
}

void BackgroundWork::add(Work work) {
    ++openCount;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        waiting.push_back({cancelled, std::move(work)});
    }
    if (threads.size() < greatestThreadCount) {
        threads.emplace_back([this] { run(); });
    }
    wake.notify_one();
}

void BackgroundWork::run() {
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        wake.wait(lock, [this] { return ends || !waiting.empty(); });
        if (ends) {
            return;
        }
        const Entry<Work> entry = std::move(waiting.front());
        waiting.pop_front();
        lock.unlock();
        Delivery delivery = entry.function([&entry] { return entry.cancelled->load(); });
        lock.lock();
        done.push_back({entry.cancelled, std::move(delivery)});
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
}

void BackgroundWork::customEvent(QEvent *) {
    std::vector<Entry<Delivery>> arrived;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        arrived.swap(done);
    }
    for (const Entry<Delivery> &entry : arrived) {
        if (!entry.cancelled->load()) {
            --openCount;
            entry.function();
        }
    }
}

void BackgroundWork::cancel() {
    cancelled->store(true);
    cancelled = std::make_shared<std::atomic<bool>>(false);
    openCount = 0;
    const std::lock_guard<std::mutex> lock(mutex);
    waiting.clear();
}
