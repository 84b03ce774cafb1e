# SPDX-License-Identifier: MIT
# Alarms: the operator's alarm table, and entries raised, refreshed and cleared by code.
qvstore reset >/dev/null
# Pin the clock where faketime exists, so the stamps below are the ones shown.
at() { if command -v faketime >/dev/null 2>&1; then faketime "$@"; else shift; "$@"; fi; }
entry() {
  for p in AlarmID AlarmCode AlarmStatus PerceivedSeverity AlarmRaisedTime AlarmClearedTime AlarmDetail; do
    printf '    %-18s %s\n' "$p" "$(qvstore get 224 "$1" "$p")"
  done
}

echo "qvsctl alarm cu_alarmInfo -> the 21 known alarm codes (code, status, severity, detail), first rows:"
qvsctl alarm cu_alarmInfo | sed -n 2,5p
echo "The alarm object: enable $(qvstore get 223 - AlarmEnable), level $(qvstore get 223 - AlarmLevel); zone $(qvstore get 85 - LocalTimeZone)"
echo
echo "2026-03-01 04:00:00 UTC: qvsctl alarm CU_add_AlarmID 104001 -> a new entry at the first free index"
at '2026-03-01 04:00:00' qvsctl alarm CU_add_AlarmID 104001 2>/dev/null
entry 1
echo "  NumberOfAlarmInfo = $(qvstore get 223 - NumberOfAlarmInfo)"
echo
echo "The raise writes these diagnostic lines (platform logger, level 5):"
at '2026-03-01 04:00:00' qvsctl alarm CU_add_AlarmID 104006 2>&1 >/dev/null | sed 's/^/    /'
echo
echo "2026-03-01 05:30:00 UTC: qvsctl alarm CU_clear_AlarmID 104001 -> status 3 and the cleared time; the entry stays"
at '2026-03-01 05:30:00' qvsctl alarm CU_clear_AlarmID 104001 2>/dev/null
entry 1
echo
echo "2026-03-02 08:00:00 UTC: raised again -> the same entry, new raised time, cleared time reset, nothing new"
at '2026-03-02 08:00:00' qvsctl alarm CU_add_AlarmID 104001 2>/dev/null
entry 1
echo "  NumberOfAlarmInfo = $(qvstore get 223 - NumberOfAlarmInfo) (the index of the newest entry, not a count)"
echo
echo "A code outside the table is still logged, with severity 0, status 0 and no detail:"
qvsctl alarm CU_add_AlarmID 999 2>/dev/null
entry 3
echo
echo "Alarm level 2: 104032 (severity 3) is refused:"
qvstore set 223 - AlarmLevel 2
qvsctl alarm CU_add_AlarmID 104032 2>&1 | grep -E 'below|result'
echo "Alarms disabled:"
qvstore set 223 - AlarmEnable 0
qvsctl alarm CU_add_AlarmID 104006 2>&1 | grep -E 'disabled|result'
echo "Clearing a code that was never raised writes nothing and gives 0:"
qvsctl alarm CU_clear_AlarmID 104160 2>/dev/null
echo
echo "On a handle of its own: qvsctl alarm add_AlarmInfo_Index 777 1 -> no entry holds 777: the next free index"
qvsctl alarm add_AlarmInfo_Index 777 1 2>/dev/null
echo "qvsctl alarm update_numberofAlarmInfo 7 -> writes NumberOfAlarmInfo"
qvsctl alarm update_numberofAlarmInfo 7 2>/dev/null
echo "  NumberOfAlarmInfo = $(qvstore get 223 - NumberOfAlarmInfo)"
