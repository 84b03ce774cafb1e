# SPDX-License-Identifier: MIT
# Logging: the executable's path, and one diagnostic line on standard error.
echo "qvsctl log util_getPidname  -> the path of the running executable"
qvsctl log util_getPidname
echo "qvsctl log util_printf ...  -> '<exe>[file:function:line]message' on stderr"
qvsctl log util_printf qvs_utils.cpp tour 1 "hello from the tour" 2>&1
