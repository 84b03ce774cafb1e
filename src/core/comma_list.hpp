// SPDX-License-Identifier: MIT
// Comma lists on module command lines ("... list:a,b,c > /proc/..."): the
// one gate a list passes at the entry of a call (character guard, line-end
// rule, length rule) and the split of a list too long for one command line
// into several whole lines, cut only between items.
#pragma once

#include <cstddef>
#include <cstring>

namespace qvs {

// What an item too long for a command line of its own does.
enum class LongItem {
    kRefuse,  // the call is refused before anything is written or sent (adds)
    kSkip,    // its module line is left out, logged; the file still changes (deletes, replays)
};

// What a line end as the text's last character does.
enum class TrailingLineEnd {
    kRefused,  // refused like any other line end
    kRemoved,  // one is removed in place before the text is used; any other line end is refused
};

// Characters of list text that fit a command line of size bytes whose text
// without the list (an empty list formatted in place) has frame characters.
constexpr int list_room(std::size_t size, int frame) { return static_cast<int>(size) - 1 - frame; }

// The gate. A null text is refused without a log line. Text holding a
// character that could change a command line (or a line end, the one
// trailing line end of kRemoved apart) is refused with "refused unsafe text
// [%s]\n" at level 1 under func, the text shown as given. With
// LongItem::kRefuse an item (text between commas) longer than room is
// refused with "refused text too long for its command line [%s]\n" and the
// item. A refused text is left unchanged; an accepted one loses its
// trailing line end under kRemoved. True when the call may go on.
bool comma_list_gate(const char *func, int line, char *text, int room, LongItem long_item,
                     TrailingLineEnd line_end);

// Logs "refused text too long for its command line [%.*s]\n" with the item
// at level 1 under func: its module line is skipped.
void log_item_skipped(const char *func, const char *item, int length);

// Sends the list in order as command lines of whole items: the whole text
// as it is when it fits room characters, otherwise the longest runs of
// items (joined as in the text) that fit, each cut at a comma (the comma at
// a cut is dropped). An item longer than room on its own is skipped with
// log_item_skipped under func; a run holding nothing is not sent.
// send(const char *piece, int length) formats and runs one line.
template <typename Send>
void for_each_list_line(const char *func, const char *text, int room, Send &&send) {
    const int len = static_cast<int>(std::strlen(text));
    if (len <= room) {
        send(text, len);
        return;
    }
    int start = 0;
    while (start < len) {
        int end = -1;  // end of the last whole item that still fits
        for (int p = start;;) {
            const int item_end = p + static_cast<int>(std::strcspn(text + p, ","));
            if (item_end - start > room) break;
            end = item_end;
            if (text[item_end] == '\0') break;
            p = item_end + 1;
        }
        if (end < 0) {
            const int item_end = start + static_cast<int>(std::strcspn(text + start, ","));
            log_item_skipped(func, text + start, item_end - start);
            start = item_end + 1;
            continue;
        }
        if (end > start) send(text + start, end - start);
        start = end + 1;
    }
}

}  // namespace qvs

// comma_list_gate under the calling function's own name and line.
#define QVS_COMMA_LIST_GATE(text, room, long_item, line_end) \
    ::qvs::comma_list_gate(__func__, __LINE__, (text), (room), (long_item), (line_end))
