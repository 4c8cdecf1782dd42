// Runs the commands in the slots of a tree on one thread, one after the other in the order in which they were started.
// The first command starts the thread. A lookup function returns the function for a command's name.
//
// Every function may be called from any thread except the thread that runs the commands.
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

    // Writes the command's name to the slot's "Command" and queues the run. A command with an unknown name is queued
    // too and fails when its turn comes. Returns the codes of Tree::write.
    LmLibResult start(std::string_view slot, std::string_view command);

    // Ends every wait in Tree::waitForType, waits for the running command, drops the commands that have not started,
    // ends the thread and resets the tree. A command that another thread starts in the meantime is dropped too.
    void finalize();

    // Does the same as finalize, but does not end the waits and does not reset the tree.
    void stop();

private:
    void stopThread(std::unique_lock<std::mutex> &lock);
    void work();
    void execute(Run &run) const;

    Tree &tree;
    const Lookup lookup;
    std::mutex stopMutex;  // held by stop() and finalize(), so that they run one at a time; locked before `mutex`
    std::mutex mutex;      // guards everything below; locked before the tree's own lock
    std::condition_variable changed;
    std::list<Run> queue;
    std::thread worker;
    bool stopping = false;
};

}  // namespace lmlib64
