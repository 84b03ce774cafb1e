# SPDX-License-Identifier: MIT
# The two Base64 codecs: the lenient b64_* (the VPN request's encoder) and
# the strict base64_* with its streaming decoder.
echo "qvsctl base64 b64_encode foo -> Zm9v (from the writable table b64_chr)"
qvsctl base64 b64_encode foo
echo
echo "qvsctl base64 b64_decode 'Z!9v' -> lenient: '!' counts as 0, nothing is refused"
qvsctl base64 b64_decode 'Z!9v'
echo
echo "qvsctl base64 b64_decode Zm9vYg -> the trailing partial group is dropped"
qvsctl base64 b64_decode Zm9vYg
echo
echo "qvsctl base64 b64e_size 4 / b64d_size 8 -> 8 and 6 (32-bit arithmetic)"
qvsctl base64 b64e_size 4
qvsctl base64 b64d_size 8
echo
echo "qvsctl base64 base64_encode foo 2 -> strict and bounded: cut at the capacity, no NUL"
qvsctl base64 base64_encode foo 2
echo
echo "qvsctl base64 base64_decode_ctx none 'Zm9v\\nYmFy' -> without a context a line feed fails (after foo)"
qvsctl base64 base64_decode_ctx none 'Zm9v\nYmFy'
echo
echo "qvsctl base64 base64_decode_ctx ctx Zm9 vYmFy '' -> with a context: pieces, then a flush call"
qvsctl base64 base64_decode_ctx ctx Zm9 vYmFy ''
echo
echo "qvsctl base64 base64_decode_alloc_ctx ctx 'Zg==Zg==' -> with a context '=' may end any quartet"
qvsctl base64 base64_decode_alloc_ctx ctx 'Zg==Zg=='
