// Runs commands in the slots of a tree: one after the other, in the order they were started, on one thread
// that begins with the first command. Knows no command itself; a lookup finds them.
//
// Every function may be called from any thread but the commands' own.
#pragma once

#include <condition_variable>
#include <list>
#include <mutex>
#include <string_view>
#include <thread>

#include "camera_library/commands/command.h"
#include "camera_library/tree/tree.h"

namespace lmlib64 {

class CommandExecutor {
public:
    using Lookup = CommandFunction (*)(std::string_view name);

    CommandExecutor(Tree &commandTree, Lookup commandLookup) : tree(commandTree), lookup(commandLookup) {}
    ~CommandExecutor() { stop(); }
    CommandExecutor(const CommandExecutor &) = delete;
    CommandExecutor &operator=(const CommandExecutor &) = delete;

    // Writes the command's name to the slot's "Command" and queues its run. An unknown name is queued too,
    // and fails when its turn comes. Codes as Tree::write.
    LmLibResult start(std::string_view slot, std::string_view command);

    // Ends every wait, waits for the command that is running, drops those that have not begun, ends the
    // thread and makes the tree as new. A command started meanwhile by another thread is dropped too.
    void finalize();

    // As finalize, but leaves the tree and the waits alone.
    void stop();

private:
    void stopThread(std::unique_lock<std::mutex> &lock);
    void work();
    void execute(Run &run) const;

    Tree &tree;
    const Lookup lookup;
    std::mutex stopMutex;  // one stop at a time; taken before mutex
    std::mutex mutex;      // guards everything below; taken before the tree's own lock
    std::condition_variable changed;
    std::list<Run> queue;
    std::thread worker;
    bool stopping = false;
};

}  // namespace lmlib64
