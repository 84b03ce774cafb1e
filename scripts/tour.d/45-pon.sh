# PON: how far the zero-configuration of a newly connected gateway has come.
echo "qvsctl pon getzeroconfigeponstate -> the state code 0-17 of an EPON uplink"
qvsctl pon getzeroconfigeponstate
echo "qvsctl pon getzeroconfiggponstate -> the same for a GPON uplink"
qvsctl pon getzeroconfiggponstate
echo "phase clocks started so far under /tmp:"
for f in /tmp/oltretime /tmp/getwantime /tmp/registerrms /tmp/servicetime; do
  [ -f "$f" ] && echo "  $f: $(cat "$f")"
done
true
