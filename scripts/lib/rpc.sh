# A JSON-RPC client of bash alone. Sourced by the scripts. The connection is descriptor 3; what arrives on it while
# something else is waited for is shown as it comes.

RPC_ID=0
RPC_SEEN= # what has been shown since the last request: a notification may come before the answer
RPC_LINE= # what rpc_read has read
RPC_PART= # of a line whose end has not come yet

rpc_open() {
    exec 3<>"/dev/tcp/127.0.0.1/$1"
}

rpc_close() {
    exec 3>&-
}

# A line of at most a second's wait. What "read" has of a line when the time is over would be lost.
rpc_read() {
    local part
    if read -r -t 1 part <&3; then
        RPC_LINE=$RPC_PART$part
        RPC_PART=
        return 0
    fi
    RPC_PART+=$part
    return 1
}

rpc_show_line() {
    local line=$1
    RPC_SEEN+=$line
    if [ ${#line} -gt 300 ]; then
        line="${line:0:280} ... (${#line} bytes)"
    fi
    printf '   < %s\n' "$line"
}

# rpc_show METHOD [PARAMS]: sends a request and shows what arrives up to its answer.
rpc_show() {
    local line
    RPC_ID=$((RPC_ID + 1))
    line="{\"jsonrpc\":\"2.0\",\"method\":\"$1\",\"id\":$RPC_ID${2:+,\"params\":$2}}"
    printf '   > %s\n' "$line"
    RPC_SEEN=
    printf '%s\n' "$line" >&3
    rpc_show_until "\"id\":$RPC_ID," 5
}

# rpc_show_notification METHOD SECONDS: shows what arrives up to that notification, unless it has come already.
rpc_show_notification() {
    [[ $RPC_SEEN == *"\"method\":\"$1\""* ]] || rpc_show_until "\"method\":\"$1\"" "$2"
}

# rpc_show_until TEXT SECONDS: shows what arrives up to the first line that holds TEXT.
rpc_show_until() {
    local deadline=$((SECONDS + $2))
    while [ $SECONDS -le $deadline ]; do
        if rpc_read; then
            rpc_show_line "$RPC_LINE"
            [[ $RPC_LINE != *"$1"* ]] || return 0
        fi
    done
    echo "   (nothing with $1 within $2 s)"
    return 1
}

# rpc_collect SECONDS: shows what arrives in that time.
rpc_collect() {
    local deadline=$((SECONDS + $1))
    while [ $SECONDS -lt $deadline ]; do
        ! rpc_read || rpc_show_line "$RPC_LINE"
    done
}

# rpc_wait_until REQUEST TEXT SECONDS: repeats a request, unseen, until its answer holds TEXT.
rpc_wait_until() {
    local deadline=$((SECONDS + $3))
    while [ $SECONDS -le $deadline ]; do
        printf '%s\n' "$1" >&3
        while rpc_read; do
            [[ $RPC_LINE != *"$2"* ]] || return 0
            [[ $RPC_LINE != *'"id"'* ]] || break
        done
        sleep 0.1
    done
    return 1
}
