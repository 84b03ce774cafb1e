#!/bin/sh
# SPDX-License-Identifier: MIT
# Stands in for swanctl where an SA state cannot be produced by a live daemon
# (an SA caught while it is being installed or deleted, a listing in an order
# the daemon never prints). "--list-sas" prints the SA list kept in the file
# named by $QVS_TEST_SA_LIST; "remove-capture" there instead removes the
# capture file the caller redirected the output to, so that it cannot be read.
case "$1" in
--list-sas)
  if [ "$QVS_TEST_SA_LIST" = remove-capture ]; then
    rm -f /var/ipsec.status
    exit 0
  fi
  [ -n "$QVS_TEST_SA_LIST" ] && cat "$QVS_TEST_SA_LIST"
  exit 0
  ;;
esac
echo "swanctl stand-in: only --list-sas is offered" >&2
exit 1
