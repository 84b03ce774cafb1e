# SPDX-License-Identifier: MIT
# Application route lists: per rule index an IP, a domain and a MAC list
# file under /userconfig/config/approute, mirrored into the route module
# through "echo ... > /proc/approute/rule" lines (module types 1, 2, 3).
mkdir -p /userconfig/config  # always present on the gateway
show() { echo "  module rule 1 type $1: $(qvstore modules approute 1 "$1")"; }
echo "qvsctl approute approute_add_route_ip 1 10.0.0.12  -> appended, ADD_DATA sent"
qvsctl approute approute_add_route_ip 1 10.0.0.12
echo "qvsctl approute approute_add_route_ip 1 10.0.0.1   -> a substring of line 1: returns 1, nothing added"
qvsctl approute approute_add_route_ip 1 10.0.0.1
echo "qvsctl approute approute_add_route_mac 1 AA-BB-CC-DD-EE-FF -> stored as given, sent as aa:bb:cc:dd:ee:ff"
qvsctl approute approute_add_route_mac 1 AA-BB-CC-DD-EE-FF
echo "qvsctl approute approute_add_route_domainlist 1 a.com,b.com -> whole list sent, then each item stored"
qvsctl approute approute_add_route_domainlist 1 a.com,b.com
echo "qvsctl approute approute_add_route_domainlist 1 a.com -> a stored item moves to the end of the file"
qvsctl approute approute_add_route_domainlist 1 a.com
echo "  file approute_domain1:"; sed 's/^/    /' /userconfig/config/approute/approute_domain1
show 1; show 2; show 3
echo "qvsctl approute approute_get_route_all 1 1        -> the stored domains joined by ','"
qvsctl approute approute_get_route_all 1 1
echo "qvsctl approute approute_get_route_count 1 0      -> lines of the IP file"
qvsctl approute approute_get_route_count 1 0
echo "qvsctl approute approute_set_route_all 1 0 10.1.1.1,10.1.1.2 -> CLR_DATA, then ADD_DATA of the list"
qvsctl approute approute_set_route_all 1 0 10.1.1.1,10.1.1.2
show 1
echo "qvsctl approute approute_del_route_mac 1 AA-BB-CC-DD-EE-FF -> line deleted; DEL_DATA keeps the dashes, so the module (colon form) keeps its entry"
qvsctl approute approute_del_route_mac 1 AA-BB-CC-DD-EE-FF
show 3
echo "qvstore reset (a restart empties the module), then qvsctl approute approute_reload_route 1"
qvstore reset >/dev/null
qvsctl approute approute_reload_route 1
show 1; show 2; show 3
echo "qvsctl approute approute_add_route_ip 1 '1.2.3.4;reboot' -> refused: -1, nothing written or run"
qvsctl approute approute_add_route_ip 1 '1.2.3.4;reboot'
echo "  the lines the module received since the restart:"
sed 's/^/    /' "${QVSIM_DIR:-/var/qvsim}/modules/approute/received"
