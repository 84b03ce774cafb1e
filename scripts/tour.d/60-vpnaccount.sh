# SPDX-License-Identifier: MIT
# VPN account retrieval: the gateway asks a provisioning server for a
# tunnel's credentials with a signed request, then parses the reply.
# Everything stays inside the sandbox: the server listens on loopback.
ip link add br0 type bridge 2>/dev/null
ip link set br0 address 02:11:22:33:44:55
echo "qvsctl vpnaccount get_macAddr  -> the MAC of the LAN bridge br0 as 12 upper-case hex digits"
qvsctl vpnaccount get_macAddr

echo
echo "qvsctl vpnaccount md5ToAscii <16 bytes> -> a digest as 32 upper-case hex digits"
qvsctl vpnaccount md5ToAscii d41d8cd98f00b204e9800998ecf8427e

echo
echo "qvsctl vpnaccount constructReqData vpn1 alice -> the signed request (MD5 over time + Message + mac)"
qvsctl vpnaccount constructReqData vpn1 alice

# A small provisioning server: reads one framed request, checks the
# signature on its own, answers with an account.
cat > /tmp/provision-server.py <<'PY'
import base64, hashlib, json, socket, struct, sys
srv = socket.socket()
srv.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
srv.bind(("127.0.0.1", 0))
srv.listen(1)
srv.settimeout(20)
with open(sys.argv[1] + ".tmp", "w") as f:
    f.write(str(srv.getsockname()[1]))
import os; os.rename(sys.argv[1] + ".tmp", sys.argv[1])
conn, _ = srv.accept()
conn.settimeout(20)
data = b""
while len(data) < 4 or len(data) < 4 + struct.unpack(">I", data[:4])[0]:
    chunk = conn.recv(4096)
    if not chunk:
        break
    data += chunk
req = json.loads(data[4:])
signed = hashlib.md5((req["time"] + req["Message"] + req["mac"]).encode()).hexdigest().upper()
print("server: got %d bytes from mac %s; inner request %s; signature %s" % (
    len(data), req["mac"], json.loads(base64.b64decode(req["Message"])),
    "checks out" if signed == req["MD5"] else "DOES NOT MATCH"), flush=True)
reply = json.dumps({"return_Parameter": {"CmdType": "GET_VPN_ACCOUNT", "Status": "0", "data": {
    "vpn_addr": "198.51.100.20", "vpn_port": "1701", "vpn_user": "alice-vpn1",
    "vpn_pwd": "Xy7-secret", "account_timeout": "86400"}}}).encode()
conn.sendall(struct.pack(">I", len(reply)) + reply)
conn.close()
PY
rm -f /tmp/provision-port
python3 /tmp/provision-server.py /tmp/provision-port &
server=$!
for _ in $(seq 100); do [ -s /tmp/provision-port ] && break; sleep 0.1; done
port=$(cat /tmp/provision-port)
echo "127.0.0.1 provision.gateway.test" >> /etc/hosts

echo
echo "qvsctl vpnaccount createSocketToGetAccount vpn1 alice provision.gateway.test:$port"
echo "  -> one TCP exchange: 4-byte big-endian length + JSON each way; the reply text comes back"
qvsctl vpnaccount createSocketToGetAccount vpn1 alice "provision.gateway.test:$port" | tee /tmp/account-reply
wait $server

reply=$(sed -n 's/^reply: //p' /tmp/account-reply)
echo
echo "qvsctl vpnaccount parseRepData '<reply>' -> the five account values"
qvsctl vpnaccount parseRepData "$reply"

echo
echo "A reply with Status \"1\" is refused:"
qvsctl vpnaccount parseRepData '{"return_Parameter":{"CmdType":"GET_VPN_ACCOUNT","Status":"1"}}'

echo
echo "A designation without a port is refused before any connection:"
qvsctl vpnaccount createSocketToGetAccount vpn1 alice "127.0.0.1:" | tail -3
