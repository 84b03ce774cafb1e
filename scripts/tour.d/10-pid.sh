# SPDX-License-Identifier: MIT
# Process PID records: find a daemon by name in the process list, record its
# PID under /tmp, read the record back without searching again.
bash -c 'exec -a tour-daemon sleep 300' &
daemon=$!
sleep 0.2
echo "A stand-in daemon runs as 'tour-daemon 300' with PID $daemon."
echo "qvsctl pid qvs_util_get_process_pid tour-daemon  -> its PID (first listed line containing the name)"
qvsctl pid qvs_util_get_process_pid tour-daemon
echo "qvsctl pid qvs_util_recordProcessPid tour-daemon -> writes /tmp/process_pid_tour-daemon.pid"
qvsctl pid qvs_util_recordProcessPid tour-daemon
echo "record file holds: $(cat /tmp/process_pid_tour-daemon.pid)"
echo "qvsctl pid qvs_util_getPidFromRecord tour-daemon -> the recorded PID"
qvsctl pid qvs_util_getPidFromRecord tour-daemon
echo "qvsctl pid qvs_util_getPidFromRecord never-recorded -> -1: no record"
qvsctl pid qvs_util_getPidFromRecord never-recorded
echo "qvsctl pid qvs_util_get_process_pid 'x;reboot' -> -1: shell characters are refused"
qvsctl pid qvs_util_get_process_pid 'x;reboot' 2>&1
kill "$daemon"
wait "$daemon" 2>/dev/null || true
