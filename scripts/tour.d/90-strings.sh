# SPDX-License-Identifier: MIT
# String helpers: WAN connection names, replacement in fixed-size buffers,
# hexadecimal and MAC checks.
echo "qvsctl strings generateName 2 INTERNET,TR069 IP_Routed 46 2 -> index_name_R|B_VID_vid"
qvsctl strings generateName 2 INTERNET,TR069 IP_Routed 46 2
echo "qvsctl strings generateName 1 OTHER IP_Bridged 0 0          -> mode 0 leaves the VLAN id out"
qvsctl strings generateName 1 OTHER IP_Bridged 0 0
echo "qvsctl strings qvsReplace a,b,c , _                          -> every ',' becomes '_'"
qvsctl strings qvsReplace a,b,c , _
echo "qvsctl strings str_replace aab 6 ab xyz                      -> axyz"
qvsctl strings str_replace aab 6 ab xyz
echo "qvsctl strings str_replace aab 4 ab xyz                      -> a: the output is cut so one more replacement fits"
qvsctl strings str_replace aab 4 ab xyz
echo "qvsctl strings qvs_is_hex_string 001a2b / 0x1F               -> 1 / 0"
qvsctl strings qvs_is_hex_string 001a2b
qvsctl strings qvs_is_hex_string 0x1F
echo "qvsctl strings isValidMac 00:00:00:00:00:01 / ff:ff:ff:ff:ff:ff -> 1 / 0"
qvsctl strings isValidMac 00:00:00:00:00:01
qvsctl strings isValidMac ff:ff:ff:ff:ff:ff
