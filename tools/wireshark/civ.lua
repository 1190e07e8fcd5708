-- SPDX-License-Identifier: GPL-3.0-or-later
-- CI-V, the control bus of Icom radios, as Tarnline captures it (tarnline --capture FILE).
--
-- Each record is one frame, FE FE to from command data FD, or a run of bytes outside any frame,
-- with its direction in the packet flags. Tarnline writes the link type USER0 (147), which this
-- dissector takes. Installed with Wireshark's global Lua plugins; from a source tree:
--   wireshark -X lua_script:tools/wireshark/civ.lua capture.pcapng

local civ = Proto("civ", "CI-V (Icom radio control bus)")

local PREAMBLE, END, JAM, OK, NG = 0xFE, 0xFD, 0xFC, 0xFB, 0xFA
local SHORTEST = 6 -- FE FE to from command FD
local SENT = 0     -- pinfo.p2p_dir of an outbound record

local addresses = { [0x00] = "broadcast", [0xE0] = "controller" }
local commands = {
    [0x00] = "transceive frequency", [0x01] = "transceive mode",
    [0x03] = "read frequency", [0x04] = "read mode",
    [0x05] = "set frequency", [0x06] = "set mode",
    [OK] = "OK", [NG] = "NG", [JAM] = "jam",
}
local modes = {
    [0x00] = "LSB", [0x01] = "USB", [0x02] = "AM", [0x03] = "CW", [0x04] = "RTTY",
    [0x05] = "FM", [0x06] = "FM-WIDE", [0x07] = "CW-REVERSE", [0x08] = "RTTY-REVERSE",
    [0x0B] = "SYNC-AM",
}
local filters = { [1] = "WIDE", [2] = "MEDIUM", [3] = "NARROW" }
local answers = { [OK] = "OK", [NG] = "NG" }

-- A value table naming every byte: the names given, and `other` for the rest.
local function all_bytes(names, other)
    local t = {}
    for b = 0, 255 do t[b] = names[b] or other end
    return t
end
local frequency_commands = { [0x00] = true, [0x03] = true, [0x05] = true }
local mode_commands = { [0x01] = true, [0x04] = true, [0x06] = true }
-- Commands whose first data byte selects what they do.
local with_subcommand = {}
for _, c in ipairs({ 0x07, 0x0E, 0x13, 0x14, 0x15, 0x16, 0x19, 0x1A, 0x1B, 0x1C, 0x1E, 0x21 }) do
    with_subcommand[c] = true
end

local f = {
    frame = ProtoField.bytes("civ.frame", "Frame"),
    to = ProtoField.uint8("civ.to", "To", base.HEX, all_bytes(addresses, "device")),
    from = ProtoField.uint8("civ.from", "From", base.HEX, all_bytes(addresses, "device")),
    cmd = ProtoField.uint8("civ.cmd", "Command", base.HEX, all_bytes(commands, "command")),
    subcmd = ProtoField.uint8("civ.subcmd", "Subcommand", base.HEX),
    data = ProtoField.bytes("civ.data", "Data"),
    freq = ProtoField.uint64("civ.freq", "Frequency (Hz)", base.DEC, nil, nil,
        "From 4 or 5 data bytes of two BCD digits each, the lowest first"),
    mode = ProtoField.uint8("civ.mode", "Mode", base.HEX, modes),
    filter = ProtoField.uint8("civ.filter", "Filter", base.DEC, filters),
    ack = ProtoField.uint8("civ.ack", "Answer", base.HEX, answers),
    outside = ProtoField.bytes("civ.outside", "Bytes outside any frame"),
    request_in = ProtoField.framenum("civ.request_in", "Request in", base.NONE, frametype.REQUEST),
    reply_in = ProtoField.framenum("civ.reply_in", "Reply in", base.NONE, frametype.RESPONSE),
    response_time = ProtoField.relative_time("civ.response_time", "Response time",
        "From the request's write to the reply's read. A read the sleeping program was woken for " ..
        "is timed when the line became readable (about 1 ms); other reads, such as a reply that " ..
        "follows the echo of its request, at the read itself, on the 50 ms grid of the " ..
        "program's pump: such a time may be up to 50 ms long."),
}
civ.fields = f

local ex = {
    jam = ProtoExpert.new("civ.jam", "Jam code", expert.group.SEQUENCE, expert.severity.WARN),
    bcd = ProtoExpert.new("civ.bad_bcd", "Not a BCD digit", expert.group.MALFORMED,
        expert.severity.WARN),
    no_end = ProtoExpert.new("civ.no_end", "Frame without its end byte", expert.group.MALFORMED,
        expert.severity.WARN),
    outside = ProtoExpert.new("civ.outside_frame", "Bytes outside any frame",
        expert.group.PROTOCOL, expert.severity.WARN),
}
civ.experts = { ex.jam, ex.bcd, ex.no_end, ex.outside }

-- Requests waiting for their reply, oldest first, by "to from" of the request; what each frame
-- was paired with, by frame number. Filled on the first pass, read on every pass.
local waiting, paired = {}, {}

function civ.init()
    waiting, paired = {}, {}
end

local function hex(b)
    return string.format("%02X", b)
end

-- The frequency in Hz, lowest digit pair first, and whether every digit was decimal.
local function frequency(range, tree)
    local hz, scale, good = 0, 1, true
    for i = 0, range:len() - 1 do
        local b = range(i, 1):uint()
        local hi, lo = math.floor(b / 16), b % 16
        if hi > 9 or lo > 9 then
            tree:add_proto_expert_info(ex.bcd, "Not a BCD digit pair: " .. hex(b))
            good = false
        end
        hz = hz + (hi * 10 + lo) * scale
        scale = scale * 100
    end
    return hz, good
end

-- Adds what the data of command `cmd` holds; returns the words for the Info column.
local function decode_data(cmd, data, tree)
    local n = data:len()
    if frequency_commands[cmd] and (n == 4 or n == 5) then
        local hz, good = frequency(data, tree)
        tree:add(f.freq, data, UInt64(hz))
        return string.format(" %.6f MHz%s", hz / 1e6, good and "" or " (bad BCD)")
    elseif mode_commands[cmd] and n >= 1 then
        local mode = data(0, 1):uint()
        tree:add(f.mode, data(0, 1))
        local words = " " .. (modes[mode] or hex(mode))
        if n >= 2 then
            local filter = data(1, 1):uint()
            tree:add(f.filter, data(1, 1))
            words = words .. " filter " .. (filters[filter] or tostring(filter))
        end
        return words
    elseif with_subcommand[cmd] and n >= 1 then
        tree:add(f.subcmd, data(0, 1))
    end
    return ""
end

-- A request is any outbound frame to one address; its reply comes back from that address to its
-- sender, with the same command or an answer code, and answers the oldest such request still
-- waiting. The echo of a request is no reply.
local MOST_WAITING = 16 -- per pair of addresses: requests never answered are let go

local function pair(pinfo, to, from, cmd, complete)
    if pinfo.visited or not complete then return end
    if pinfo.p2p_dir == SENT then
        if to == 0x00 or cmd == OK or cmd == NG then return end
        local list = waiting[hex(to) .. hex(from)] or {}
        waiting[hex(to) .. hex(from)] = list
        table.insert(list, { number = pinfo.number, time = pinfo.abs_ts, cmd = cmd })
        if #list > MOST_WAITING then table.remove(list, 1) end
        return
    end
    local list = waiting[hex(from) .. hex(to)] or {}
    for i, request in ipairs(list) do
        if request.cmd == cmd or cmd == OK or cmd == NG then
            table.remove(list, i)
            paired[pinfo.number] = { request = request.number, seconds = pinfo.abs_ts - request.time }
            paired[request.number] = { reply = pinfo.number }
            return
        end
    end
end

local function response_time(seconds)
    local us = math.floor(seconds * 1e6 + 0.5)
    return NSTime(math.floor(us / 1e6), (us % 1000000) * 1000)
end

local function show_pairing(pinfo, tree)
    local p = paired[pinfo.number]
    if not p then return "" end
    if p.reply then
        tree:add(f.reply_in, p.reply):set_generated()
        return ""
    end
    tree:add(f.request_in, p.request):set_generated()
    tree:add(f.response_time, response_time(p.seconds)):set_generated()
    return string.format(" (reply in %d ms)", math.floor(p.seconds * 1000 + 0.5))
end

local function mark_jams(tvb, tree)
    for i = 0, tvb:len() - 1 do
        if tvb(i, 1):uint() == JAM then
            tree:add_proto_expert_info(ex.jam, "Jam code at byte " .. i)
        end
    end
end

local function dissect_outside(tvb, pinfo, tree)
    local item = tree:add(f.outside, tvb())
    item:add_proto_expert_info(ex.outside)
    mark_jams(tvb, item)
    pinfo.cols.info = string.format("%d bytes outside any frame", tvb:len())
end

local function dissect_frame(tvb, pinfo, tree)
    local n = tvb:len()
    local complete = n >= SHORTEST and tvb(n - 1, 1):uint() == END
    local item = tree:add(f.frame, tvb())
    mark_jams(tvb, item)
    if not complete then item:add_proto_expert_info(ex.no_end) end
    if n < 5 then
        pinfo.cols.info = "Frame cut after its preamble"
        return
    end
    local to, from, cmd = tvb(2, 1):uint(), tvb(3, 1):uint(), tvb(4, 1):uint()
    item:add(f.to, tvb(2, 1))
    item:add(f.from, tvb(3, 1))
    item:add(f.cmd, tvb(4, 1))
    if cmd == OK or cmd == NG then item:add(f.ack, tvb(4, 1)) end
    pinfo.cols.src, pinfo.cols.dst = hex(from), hex(to)
    local data_end = complete and n - 1 or n
    local words = ""
    if data_end > 5 then
        local data = tvb(5, data_end - 5)
        item:add(f.data, data)
        words = decode_data(cmd, data, item)
    end
    pair(pinfo, to, from, cmd, complete)
    -- A read command with data is the radio's answer: what it holds, not what was asked.
    local answers_with = { [0x03] = "frequency", [0x04] = "mode" }
    local name = data_end > 5 and answers_with[cmd] or commands[cmd] or ("command " .. hex(cmd))
    local info = string.format("%s → %s %s%s", hex(from), hex(to), name, words)
    if not complete then info = info .. " [no end byte]" end
    pinfo.cols.info = info .. show_pairing(pinfo, item)
end

function civ.dissector(tvb, pinfo, tree)
    pinfo.cols.protocol = "CI-V"
    local root = tree:add(civ, tvb())
    if tvb:len() >= 2 and tvb(0, 1):uint() == PREAMBLE and tvb(1, 1):uint() == PREAMBLE then
        dissect_frame(tvb, pinfo, root)
    else
        dissect_outside(tvb, pinfo, root)
    end
    return tvb:len()
end

DissectorTable.get("wtap_encap"):add(wtap.USER0, civ)
