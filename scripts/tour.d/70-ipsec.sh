# SPDX-License-Identifier: MIT
# IPsec: the client key and certificate from the operator's CA, and the
# tunnels' SA states in the data model, read from a live IKE daemon.
qvstore reset >/dev/null
w=/tmp/ipsec-tour
mkdir -p "$w" /userconfig/config
pids=()
stop_daemons() { for p in "${pids[@]}"; do kill "$p" 2>/dev/null; wait "$p" 2>/dev/null; done; pids=(); }
trap stop_daemons EXIT

echo "The operator's CA (made here with ipsec pki) is placed as /tmp/ca.key.pem and /tmp/ca.cert.pem."
ipsec pki --gen --outform pem > /tmp/ca.key.pem 2>/dev/null
ipsec pki --self --ca --lifetime 3650 --in /tmp/ca.key.pem --dn "C=CN, O=Operator, CN=Operator Root CA" --outform pem > /tmp/ca.cert.pem 2>/dev/null
cp /tmp/ca.cert.pem "$w/ca.cert.pem"; cp /tmp/ca.key.pem "$w/ca.key.pem"
echo
echo "qvsctl ipsec ipsec_write_ca_info CN \"China Mobile\" -> /tmp/ca.info:"
qvsctl ipsec ipsec_write_ca_info CN "China Mobile"
echo "  /tmp/ca.info: $(cat /tmp/ca.info) (no line end)"
echo "qvsctl ipsec ipsec_write_ca_info CN \"\" -> refused, the file stays:"
qvsctl ipsec ipsec_write_ca_info CN "" 2>&1 | sed 's/^/  /'
echo
echo "qvsctl ipsec ipsec_generate_client_ca -> key, certificate, CA files moved:"
qvsctl ipsec ipsec_generate_client_ca 2>/dev/null
ls -l /userconfig/config/ipsec | sed 's/^/  /'
echo "  pki --print of the client certificate:"
pki --print --in /userconfig/config/ipsec/client.cert.pem 2>/dev/null | grep -E 'subject|issuer' | sed 's/^/  /'
echo "  openssl verify: $(openssl verify -CAfile /userconfig/config/ipsec/ca.cert.pem /userconfig/config/ipsec/client.cert.pem)"
echo "A second call finds no CA files any more:"
qvsctl ipsec ipsec_generate_client_ca 2>&1 | sed 's/^/  /'
echo

echo "A tunnel: the gateway's charon (namespace ipsa, 10.77.0.1) and a VPN server's (ipsb, 10.77.0.2),"
echo "joined by a veth pair; IPsec in userspace (kernel-libipsec). The gateway authenticates with the"
echo "client certificate just made, the server with one from the same CA."
ip netns add ipsa; ip netns add ipsb
ip link add va netns ipsa type veth peer name vb netns ipsb
ip -n ipsa addr add 10.77.0.1/24 dev va; ip -n ipsb addr add 10.77.0.2/24 dev vb
ip -n ipsa addr add 10.1.1.1/32 dev lo; ip -n ipsb addr add 10.1.2.1/32 dev lo
for n in ipsa ipsb; do ip -n $n link set lo up; done
ip -n ipsa link set va up; ip -n ipsb link set vb up
for s in a b; do mkdir -p "$w/$s/x509" "$w/$s/x509ca" "$w/$s/private"; cp "$w/ca.cert.pem" "$w/$s/x509ca/"; done
cp /userconfig/config/ipsec/client.cert.pem "$w/a/x509/"; cp /userconfig/config/ipsec/client.key.pem "$w/a/private/"
ipsec pki --gen --outform pem > "$w/b/private/server.key.pem" 2>/dev/null
ipsec pki --pub --in "$w/b/private/server.key.pem" 2>/dev/null | ipsec pki --issue --cacert "$w/ca.cert.pem" --cakey "$w/ca.key.pem" \
  --dn "C=CN, O=Operator, CN=vpn.example.cn" --outform pem > "$w/b/x509/server.cert.pem" 2>/dev/null
for s in a b; do
  vici="unix:///var/run/charon.vici"; [ $s = b ] && vici="unix://$w/b/charon.vici"
  cat > "$w/$s/strongswan.conf" <<EOC
charon {
  load_modular = no
  load = random nonce aes sha1 sha2 hmac kdf gmp pem pkcs1 pubkey x509 revocation constraints kernel-libipsec kernel-netlink socket-default vici
  filelog { log { path = $w/$s/charon.log
    default = 1 } }
  plugins { vici { socket = $vici } }
}
EOC
done
child() { printf 'children { child1 { local_ts = %s\n remote_ts = %s\n esp_proposals = aes128-sha256 } }' "$1" "$2"; }
cat > "$w/a/swanctl.conf" <<EOC
connections { conn1 { local_addrs = 10.77.0.1
    remote_addrs = 10.77.0.2
    local { auth = pubkey
      certs = client.cert.pem }
    remote { auth = pubkey
      id = "C=CN, O=Operator, CN=vpn.example.cn" }
    $(child 10.1.1.0/24 10.1.2.0/24) } }
EOC
cat > "$w/b/swanctl.conf" <<EOC
connections { gateways { local { auth = pubkey
      certs = server.cert.pem }
    remote { auth = pubkey }
    $(child 10.1.2.0/24 10.1.1.0/24) } }
EOC
STRONGSWAN_CONF=$w/a/strongswan.conf ip netns exec ipsa /usr/lib/ipsec/charon >/dev/null 2>&1 &
pids+=($!)
STRONGSWAN_CONF=$w/b/strongswan.conf ip netns exec ipsb unshare --mount sh -c \
  'mount -t tmpfs tour-run /var/run && exec /usr/lib/ipsec/charon' >/dev/null 2>&1 &
pids+=($!)
for i in $(seq 100); do
  swanctl --stats >/dev/null 2>&1 && swanctl --stats --uri "unix://$w/b/charon.vici" >/dev/null 2>&1 && break
  sleep 0.1
done
swanctl --load-all --file "$w/a/swanctl.conf" >/dev/null 2>&1
swanctl --load-all --file "$w/b/swanctl.conf" --uri "unix://$w/b/charon.vici" >/dev/null 2>&1

qvstore add 533 3 >/dev/null; qvstore set 533 3 Enable 1
show() { for i in 1 2 3; do printf '  Config.%d Enable=%s ConnectionStatus=%s\n' $i "$(qvstore get 533 $i Enable)" "$(qvstore get 533 $i ConnectionStatus)"; done; }
echo
echo "Before any tunnel: qvsctl ipsec ipsec_update_status"
qvsctl ipsec ipsec_update_status 2>/dev/null
show
echo
echo "swanctl --initiate --ike conn1 --child child1:"
swanctl --initiate --ike conn1 --child child1 --timeout 10 2>/dev/null | tail -1 | sed 's/^/  /'
swanctl --list-sas 2>/dev/null | grep -E 'conn1|child1' | sed 's/^/  /'
echo "qvsctl ipsec ipsec_update_status -> conn1 is instance 1:"
qvsctl ipsec ipsec_update_status 2>/dev/null
show
echo
echo "swanctl --terminate --ike conn1, then qvsctl ipsec ipsec_update_status -> back to the reset words:"
swanctl --terminate --ike conn1 --timeout 10 >/dev/null 2>&1
qvsctl ipsec ipsec_update_status 2>/dev/null
show
stop_daemons
