# SPDX-License-Identifier: MIT
# Application filter lists: per rule index one comma-joined line per list
# type under /userconfig/config/appfilter; every change clears the filter
# module's list and adds each item again ("echo ... > /proc/appfilter/rule").
mkdir -p /userconfig/config  # always present on the gateway
show() { echo "  module rule 2 type $1: $(qvstore modules appfilter 2 "$1")"; }
echo "qvsctl appfilter appfilter_add_route_iplist 2 10.0.0.12,10.0.0.2 -> the file is one line"
qvsctl appfilter appfilter_add_route_iplist 2 10.0.0.12,10.0.0.2
echo "  file appfilter_ip2: $(cat /userconfig/config/appfilter/appfilter_ip2)"
show 1
echo "qvsctl appfilter appfilter_add_route_iplist 2 10.0.0.1 -> already contained in 10.0.0.12: unchanged"
qvsctl appfilter appfilter_add_route_iplist 2 10.0.0.1
echo "qvsctl appfilter appfilter_del_route_iplist 2 10.0.0.2 -> the last item goes with the comma before it"
qvsctl appfilter appfilter_del_route_iplist 2 10.0.0.2
echo "qvsctl appfilter appfilter_get_route_list 2 0"
qvsctl appfilter appfilter_get_route_list 2 0
show 1
echo "qvsctl appfilter appfilter_add_route_list 2 1 a.com,b.com -> dispatches to the domain list"
qvsctl appfilter appfilter_add_route_list 2 1 a.com,b.com
show 2
echo "qvsctl appfilter appfilter_flush_route_list 2 1 -> exactly one CLR_DATA"
qvsctl appfilter appfilter_flush_route_list 2 1
show 2
echo "qvstore reset (a restart empties the module), then the update replays the IP list"
qvstore reset >/dev/null
qvsctl appfilter update_data_list_to_appfilter_module 2 0
show 1
echo "  the command lines of the update, from the journal:"
qvstore journal | grep '^cmd' | sed 's/^/    /'
