# SPDX-License-Identifier: MIT
# Time: timer rules moved to UTC, local time stamps, summer time, UTC texts.
have_faketime() { command -v faketime >/dev/null 2>&1; }

echo "A timer rule 20:00-22:30 on Fri,Sat,Sun in zone -05:00 lies wholly on the next UTC day:"
qvsctl time my_utctime -05:00 20:00 22:30 5,6,7 2>/dev/null
echo
echo "06:00-10:00 on Mon,Tue in zone +08:00 starts on the previous UTC day: the rule is split in two"
echo "(the first range ends at 23:59:59, the second starts at 00:00:00):"
qvsctl time my_utctime +08:00 06:00 10:00 1,2 2>/dev/null
echo
echo "The same rule with its diagnostic lines (standard error, through util_printf):"
qvsctl time my_utctime +08:00 06:00 10:00 1,2 2>&1 >/dev/null | grep -v '^$' | sed 's/^.*\[/  [/'
echo
echo "A zone with a sign and nothing after it is refused:"
qvsctl time my_utctime - 06:00 10:00 1,2 2>/dev/null
echo
if have_faketime; then
  echo "Local time stamps with the clock pinned (faketime) at 2024-02-29 04:00:00 UTC:"
  echo "  zone +08:00 ->  $(faketime '2024-02-29 04:00:00' qvsctl time my_localtime 0 +08:00 | sed -n 's/^time: //p')   (29 February: a blank instead of the T)"
  echo "  zone -05:00 ->  $(faketime '2024-02-29 04:00:00' qvsctl time my_localtime 0 -05:00 | sed -n 's/^time: //p')"
  echo "On the last Sunday of March at 01:00:00 UTC summer time has begun (an hour is added):"
  echo "  $(faketime '2024-03-31 01:00:00' qvsctl time my_localtime 1 +00:00 2>/dev/null | sed -n 's/^time: //p')"
  echo "  and one second earlier it has not: $(faketime '2024-03-31 00:59:59' qvsctl time my_localtime 1 +00:00 2>/dev/null | sed -n 's/^time: //p')"
else
  echo "The current local time stamp in zone +08:00:"
  qvsctl time my_localtime 0 +08:00
fi
echo
echo "qvsCheckDST: the window runs from the last Sunday of March 01:00:00 to the last Sunday of October 01:00:00:"
echo "  2024-03-31 00:59:59 -> $(qvsctl time qvsCheckDST 2024 3 31 0 59 59 | sed -n 's/^result: //p')," \
     "01:00:00 -> $(qvsctl time qvsCheckDST 2024 3 31 1 0 0 | sed -n 's/^result: //p')," \
     "2024-10-27 01:00:00 -> $(qvsctl time qvsCheckDST 2024 10 27 1 0 0 | sed -n 's/^result: //p')," \
     "01:00:01 -> $(qvsctl time qvsCheckDST 2024 10 27 1 0 1 | sed -n 's/^result: //p')"
echo
echo "my_settime: 2024-01-01 08:00 local in zone +08:00 is, in UTC,"
qvsctl time my_settime 2024-01-01T08:00:00 +08:00
echo
echo "get_currentTime reads zone and summer-time flag from the store's time object"
echo "(InternetGatewayDevice.Time: LocalTimeZone $(qvstore get 85 - LocalTimeZone), DaylightSavingsUsed $(qvstore get 85 - DaylightSavingsUsed)):"
qvsctl time get_currentTime
echo "After setting LocalTimeZone to -05:00:"
qvstore set 85 - LocalTimeZone -05:00 >/dev/null
qvsctl time get_currentTime
echo "Without the time object the process's own local time is used (and logged at level 5):"
qvstore fault "object 85" >/dev/null
qvsctl time get_currentTime 2>/dev/null
qvstore fault clear >/dev/null
