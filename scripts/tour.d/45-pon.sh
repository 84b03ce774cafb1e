# SPDX-License-Identifier: MIT
# PON: how far the zero-configuration of a newly connected gateway has come.
qvstore reset >/dev/null
at() { if command -v faketime >/dev/null 2>&1; then faketime "$@"; else shift; "$@"; fi; }
state() { "$@" 2>/dev/null | tr '\n' ' ' | sed 's/ $//'; echo; }

echo "The default gateway is registered, its TR-069 connection is up and the service result is 1:"
echo "  EPON: $(state qvsctl pon getzeroconfigeponstate)"
echo "  GPON: $(state qvsctl pon getzeroconfiggponstate)"
echo
echo "The EPON OLT link reports \"Initializing\":"
qvstore set 211 1 RegistrationState Initializing
echo "  $(state qvsctl pon getzeroconfigeponstate)"
echo
echo "It reports \"NoSignal\" (a known failure): the OLT phase clock starts"
qvstore set 211 1 RegistrationState NoSignal
echo "  at 10:00:00  $(state at '2026-03-01 10:00:00' qvsctl pon getzeroconfigeponstate)"
echo "  /tmp/oltretime holds $(cat /tmp/oltretime), written by the command runner:"
qvstore journal | grep -F 'echo ' | tail -1 | cut -f2- | sed 's/^/    /'
echo "  at 10:03:00  $(state at '2026-03-01 10:03:00' qvsctl pon getzeroconfigeponstate)"
echo "  at 10:03:01  $(state at '2026-03-01 10:03:01' qvsctl pon getzeroconfigeponstate)"
qvstore set 211 1 RegistrationState "Something else"
echo "  with a state text that is not a known failure: $(state at '2026-03-01 10:03:01' qvsctl pon getzeroconfigeponstate)"
echo
echo "The GPON link is registered but its TR-069 connection is down: the WAN phase clock starts"
qvstore set 174 1,1,1 ConnectionUp 0
echo "  at 10:00:00  $(state at '2026-03-01 10:00:00' qvsctl pon getzeroconfiggponstate)"
echo "  at 10:02:01  $(state at '2026-03-01 10:02:01' qvsctl pon getzeroconfiggponstate)"
qvstore set 174 1,1,1 ConnectionUp 1
echo
echo "Remote management registration under way (indicator 1), then its time-out:"
qvstore set 288 - X_QV_RegisterFlag 1
echo "  at 10:00:00  $(state at '2026-03-01 10:00:00' qvsctl pon getzeroconfiggponstate)"
echo "  at 10:02:01  $(state at '2026-03-01 10:02:01' qvsctl pon getzeroconfiggponstate)"
qvstore set 288 - X_QV_RegisterFlag 0
echo "Registration status 4, then 5:"
qvstore set 288 - X_QV_RegisterStatus 4
echo "  $(state qvsctl pon getzeroconfiggponstate)"
qvstore set 288 - X_QV_RegisterStatus 5
echo "  $(state qvsctl pon getzeroconfiggponstate)"
echo "Registered (status 0), waiting for the service configuration (result 0):"
qvstore set 288 - X_QV_RegisterStatus 0
qvstore set 288 - X_QV_ServiceResult 0
echo "  at 10:00:00  $(state at '2026-03-01 10:00:00' qvsctl pon getzeroconfiggponstate)"
echo "  at 10:02:01  $(state at '2026-03-01 10:02:01' qvsctl pon getzeroconfiggponstate)"
echo "More than 10 attempts:"
qvstore set 288 - X_QV_RegisterTimes 11
echo "  $(state qvsctl pon getzeroconfiggponstate)"
echo
echo "Each call refreshes the OLT object first (EPON with 300, GPON with 3000):"
qvstore journal | grep '^stats' | sort -u | sed 's/^/    /'
