#pragma once

#include <cstddef>
#include <functional>
#include <iterator>
#include <utility>
#include <vector>

// What a connection runs when its outermost transaction ends (committed or
// not). A nested transaction that rolls back runs the ones added inside it.
class TransactionEndCallbacks final
{
public:
    std::size_t size() const { return m_callbacks.size(); }
    void add(std::function<void(bool committed)> callback) { m_callbacks.push_back(std::move(callback)); }

    // Runs and drops the callbacks from index first on, in order.
    void run(std::size_t first, bool committed)
    {
        if (first >= m_callbacks.size())
            return;
        std::vector<std::function<void(bool)>> due(std::make_move_iterator(m_callbacks.begin() + first),
                                                   std::make_move_iterator(m_callbacks.end()));
        m_callbacks.resize(first);
        for (auto &callback : due)
            callback(committed);
    }

private:
    std::vector<std::function<void(bool)>> m_callbacks;
};
