// Runs the commands in the slots of a tree, one after the other in the order in which they were started, on one thread
// that the first command starts. It gets the commands from a lookup function.
//
// Every function may be called from any thread except the one that runs the commands.
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

    // Writes the command's name to the slot's "Command" and queues its run. An unknown name is queued too and fails
    // when its turn comes. Returns the codes of Tree::write.
    LmLibResult start(std::string_view slot, std::string_view command);

    // Ends every wait, waits for the running command, drops the commands that have not started, ends the thread and
    // resets the tree. A command that another thread starts in the meantime is dropped too.
    void finalize();

    // Does the same as finalize, but neither resets the tree nor ends the waits.
    void stop();

private:
    void stopThread(std::unique_lock<std::mutex> &lock);
    void work();
    void execute(Run &run) const;

    Tree &tree;
    const Lookup lookup;
    std::mutex stopMutex;  // held by a stop, so that stops run one at a time; locked before `mutex`
    std::mutex mutex;      // guards everything below; locked before the tree's own lock
    std::condition_variable changed;
    std::list<Run> queue;
    std::thread worker;
    bool stopping = false;
};

}  // namespace lmlib64
