-- The protocol of tavmir controllers for Wireshark and tshark: frames with the names of a project,
-- replies beside their requests, and marks where something is not as it should be.
--
--   offset  0  1 | 2  3 | 4  5 | 6       | 7        | 8     | 9 …
--          trans- | 0  0 | bytes| station | function | count | entries
--          action |      | after|         | code     |       |
--
-- Any bytes may come: every access below is behind a look at how many there are.

local HEADER = 9 -- up to and with the count, or the exception code
local LENGTH_END = 6 -- the length field counts from here on
local MOST_AFTER = 1024 -- a length field above this is none
local EXCEPTION = 0x80
local SHOWN_IN_INFO = 8 -- entries named in the info column

local BITS, WORDS, DOUBLE_WORDS = "bit", "word", "dword"

local FUNCTIONS = {
  [100] = { write = false, class = BITS, width = 1, words = "read bits" },
  [101] = { write = true, class = BITS, width = 1, words = "write bits" },
  [102] = { write = false, class = WORDS, width = 2, words = "read words" },
  [103] = { write = true, class = WORDS, width = 2, words = "write words" },
  [108] = { write = false, class = DOUBLE_WORDS, width = 4, words = "read double words" },
  [109] = { write = true, class = DOUBLE_WORDS, width = 4, words = "write double words" },
}

local EXCEPTIONS = {
  [1] = "illegal function",
  [2] = "illegal data address",
  [3] = "illegal data value",
  [4] = "device failure",
  [5] = "acknowledged, still working",
  [6] = "device busy",
  [8] = "memory parity error",
  [10] = "gateway path unavailable",
  [11] = "station does not answer the gateway",
}

local function function_names()
  local names = {}
  for code, known in pairs(FUNCTIONS) do
    names[code] = known.words
  end
  return names
end

local tavmir = Proto("tavmir", "Tavmir Controller Protocol")

local f = {
  transaction = ProtoField.uint16("tavmir.transaction", "Transaction", base.DEC),
  protocol = ProtoField.uint16("tavmir.protocol", "Protocol", base.DEC),
  length = ProtoField.uint16("tavmir.length", "Bytes that follow", base.DEC),
  station = ProtoField.uint8("tavmir.station", "Station", base.DEC),
  func = ProtoField.uint8("tavmir.function", "Function", base.DEC, function_names(), 0x7F),
  exception = ProtoField.uint8("tavmir.exception", "Exception", base.DEC, EXCEPTIONS),
  count = ProtoField.uint8("tavmir.count", "Count", base.DEC),
  entry = ProtoField.none("tavmir.entry", "Entry"),
  address = ProtoField.uint32("tavmir.address", "Address", base.DEC),
  name = ProtoField.string("tavmir.name", "Name"),
  value = ProtoField.uint32("tavmir.value", "Value", base.DEC),
  signed = ProtoField.int32("tavmir.value.signed", "Value, signed", base.DEC),
  float = ProtoField.float("tavmir.value.float", "Value, float"),
  rest = ProtoField.bytes("tavmir.rest", "Bytes that belong to no entry"),
  request_in = ProtoField.framenum("tavmir.request_in", "Answers the request in frame", base.NONE,
    frametype.REQUEST),
  response_in = ProtoField.framenum("tavmir.response_in", "Answered in frame", base.NONE,
    frametype.RESPONSE),
  time = ProtoField.relative_time("tavmir.time", "Time since the request"),
}
tavmir.fields = {
  f.transaction, f.protocol, f.length, f.station, f.func, f.exception, f.count, f.entry,
  f.address, f.name, f.value, f.signed, f.float, f.rest, f.request_in, f.response_in, f.time,
}

local e = {
  exception = ProtoExpert.new("tavmir.refused", "The controller refused the request",
    expert.group.RESPONSE_CODE, expert.severity.WARN),
  unasked = ProtoExpert.new("tavmir.unasked", "A reply that nobody waits for",
    expert.group.SEQUENCE, expert.severity.WARN),
  duplicate = ProtoExpert.new("tavmir.duplicate", "The request has been answered already",
    expert.group.SEQUENCE, expert.severity.WARN),
  unanswered = ProtoExpert.new("tavmir.unanswered", "No reply to this request in the capture",
    expert.group.SEQUENCE, expert.severity.WARN),
  late = ProtoExpert.new("tavmir.late", "The reply is late",
    expert.group.SEQUENCE, expert.severity.WARN),
  length = ProtoExpert.new("tavmir.wrong_length", "The frame has not the length of its entries",
    expert.group.MALFORMED, expert.severity.ERROR),
  count = ProtoExpert.new("tavmir.wrong_count", "The count is not the request's",
    expert.group.PROTOCOL, expert.severity.ERROR),
  addresses = ProtoExpert.new("tavmir.wrong_addresses", "The addresses are not the request's",
    expert.group.PROTOCOL, expert.severity.ERROR),
  func = ProtoExpert.new("tavmir.wrong_function", "The function is not the request's",
    expert.group.PROTOCOL, expert.severity.ERROR),
  unknown = ProtoExpert.new("tavmir.unknown_function", "Not a function of this protocol",
    expert.group.UNDECODED, expert.severity.WARN),
  stream = ProtoExpert.new("tavmir.broken_stream", "No frame begins here",
    expert.group.MALFORMED, expert.severity.ERROR),
}
tavmir.experts = {
  e.exception, e.unasked, e.duplicate, e.unanswered, e.late, e.length, e.count, e.addresses,
  e.func, e.unknown, e.stream,
}

tavmir.prefs.ports = Pref.range("TCP ports", "5020", "Ports of controllers", 65535)
tavmir.prefs.names = Pref.string("Names file", "",
  "What \"tavmir-host explain PROJECT --names\" printed")
tavmir.prefs.late = Pref.uint("Late after (ms)", 500, "A reply that takes longer is marked as late")
tavmir.prefs.take_502 = Pref.bool("Look at port 502", false,
  "Take this protocol's functions on port 502; other frames go to the built-in dissector")

-- Names ---------------------------------------------------------------------------------------

-- By "class address station" and, where the file says "*", by "class address".
local names = {}

-- A line: class, address in bits, station or "*", format, name; a tab between two of them.
local function name_of_line(line)
  local class, address, station, format, name =
    line:match("^(%a+)\t(%d+)\t([%d*]+)\t(%a+)\t(.+)$")
  if not class or not tonumber(address) then
    return
  end
  local key = class .. " " .. address
  if station ~= "*" then
    key = key .. " " .. station
  end
  names[key] = { name = name:gsub("\r$", ""), format = format }
end

local function read_names(file)
  names = {}
  if file == "" then
    return
  end
  local opened = io.open(file, "r")
  if not opened then
    return -- addresses are shown as numbers
  end
  -- A folder can be opened, and not be read.
  pcall(function()
    for line in opened:lines() do
      name_of_line(line)
    end
  end)
  opened:close()
end

local function named(class, address, station)
  local key = class .. " " .. address
  return names[key .. " " .. station] or names[key]
end

-- What was asked ------------------------------------------------------------------------------

-- By stream and transaction: the attempts of the request that carries it, oldest first. An
-- attempt: { frame, at, bytes, func, count, station, reply }.
local attempts = {}
-- By "frame:offset", what the first look at a frame found; looks after it read it.
local found = {}

function tavmir.init()
  attempts = {}
  found = {}
end

local field_stream = Field.new("tcp.stream")

local function stream_of()
  local info = field_stream()
  return info and info.value or 0
end

-- Another attempt of a request has its bytes; anything else with its number is another request.
local function ask(key, request)
  local list = attempts[key]
  if not list or list[#list].bytes ~= request.bytes then
    list = {}
    attempts[key] = list
  end
  list[#list + 1] = request
end

-- The attempt that a reply answers: the last one, as the host takes it; or an earlier one that was
-- given up. Then whether it is too late for that.
local function answered(list)
  local last = list[#list]
  if not last.reply then
    return last, false
  end
  for i = #list - 1, 1, -1 do
    if not list[i].reply then
      return list[i], true
    end
  end
  return nil, false
end

-- Frames --------------------------------------------------------------------------------------

local function shown_value(format, width, raw, as_signed, as_float)
  if width == 4 and format == "float" then
    return string.format("%.9g", as_float)
  end
  if format == "signed" then
    return tostring(as_signed)
  end
  if format == "hex" then
    return string.format("0x%0" .. width * 2 .. "X", raw)
  end
  return tostring(raw)
end

local function signed_value(raw, width)
  if width == 2 and raw >= 0x8000 then
    return raw - 0x10000
  end
  if width == 4 and raw >= 0x80000000 then
    return raw - 0x100000000
  end
  return raw
end

-- One entry in the tree; what the info column says of it.
local function show_entry(tree, range, known, has_value, station)
  local address = range(0, 4):uint()
  local meant = named(known.class, address, station)
  local entry = tree:add(f.entry, range)
  entry:add(f.address, range(0, 4))
  local words = meant and meant.name or tostring(address)
  if meant then
    entry:add(f.name, range(0, 4), meant.name):set_generated()
  end
  if has_value then
    local bytes = range(4, known.width)
    local raw = known.write and bytes:le_uint() or bytes:uint()
    local as_signed = signed_value(raw, known.width)
    entry:add(f.value, bytes, raw)
    local as_float = 0
    if known.width > 1 then
      entry:add(f.signed, bytes, as_signed)
    end
    if known.width == 4 then
      as_float = known.write and bytes:le_float() or bytes:float()
      entry:add(f.float, bytes, as_float)
    end
    words = words .. "="
      .. shown_value(meant and meant.format or "unsigned", known.width, raw, as_signed, as_float)
  end
  entry:set_text(words)
  return words
end

-- All whole entries; in words, as many as the info column has room for.
local function show_entries(tree, tvb, known, has_value, station)
  local size = has_value and 4 + known.width or 4
  local words, count, offset = {}, 0, HEADER
  while offset + size <= tvb:len() do
    local said = show_entry(tree, tvb(offset, size), known, has_value, station)
    count = count + 1
    if count <= SHOWN_IN_INFO then
      words[count] = said
    end
    offset = offset + size
  end
  if offset < tvb:len() then
    tree:add(f.rest, tvb(offset))
  end
  local line = table.concat(words, ", ")
  if count > SHOWN_IN_INFO then
    line = line .. string.format(" and %d more", count - SHOWN_IN_INFO)
  end
  return line
end

local function same_addresses(reply, request, known)
  local entry = 4 + known.width
  local i = 0
  while HEADER + (i + 1) * entry <= reply:len() and HEADER + (i + 1) * 4 <= #request do
    local from = HEADER + i * 4
    local asked = request:sub(from + 1, from + 4)
    if reply:raw(HEADER + i * entry, 4) ~= asked then
      return false
    end
    i = i + 1
  end
  return true
end

-- What the first look at a request finds: nothing but that it was asked.
local function look_at_request(key, tvb, pinfo)
  local request = {
    frame = pinfo.number,
    at = pinfo.rel_ts,
    bytes = tvb:raw(),
    func = tvb(7, 1):uint(),
    count = tvb(8, 1):uint(),
  }
  ask(key, request)
  return { request = request }
end

-- What the first look at a reply finds: the request it answers, and whether it is too late.
local function look_at_reply(key, pinfo)
  local list = attempts[key]
  if not list then
    return { unasked = true }
  end
  local request, is_late = answered(list)
  if not request then
    return { duplicate = list[#list] }
  end
  request.reply = pinfo.number
  return { answers = request, is_late = is_late, took = pinfo.rel_ts - request.at }
end

local function show_time(tree, seconds)
  local whole = math.floor(seconds)
  tree:add(f.time, NSTime.new(whole, math.floor((seconds - whole) * 1e9 + 0.5))):set_generated()
end

local function check_reply(tree, tvb, look, marks)
  if look.unasked then
    tree:add_proto_expert_info(e.unasked)
    marks[#marks + 1] = "unasked"
    return
  end
  local request = look.answers or look.duplicate
  tree:add(f.request_in, request.frame):set_generated()
  if look.duplicate then
    tree:add_proto_expert_info(e.duplicate)
    marks[#marks + 1] = "duplicate"
  else
    show_time(tree, look.took)
    if look.is_late or look.took * 1000 > tavmir.prefs.late then
      tree:add_proto_expert_info(e.late,
        string.format("The reply is late: %.1f ms behind the request", look.took * 1000))
      marks[#marks + 1] = "late"
    end
  end
  local func = tvb(7, 1):uint()
  if func % EXCEPTION ~= request.func % EXCEPTION then
    tree:add_proto_expert_info(e.func)
    marks[#marks + 1] = "wrong function"
    return
  end
  if func >= EXCEPTION then
    return
  end
  if tvb(8, 1):uint() ~= request.count then
    tree:add_proto_expert_info(e.count)
    marks[#marks + 1] = "wrong count"
  end
  local known = FUNCTIONS[func]
  if known and not known.write and not same_addresses(tvb, request.bytes, known) then
    tree:add_proto_expert_info(e.addresses)
    marks[#marks + 1] = "wrong addresses"
  end
end

-- The length that a frame with this header must have; nil where that is not known.
local function right_length(tvb, known, is_request)
  local func = tvb(7, 1):uint()
  if func >= EXCEPTION and not is_request then
    return HEADER
  end
  if not known then
    return nil
  end
  local entry = 4
  if known.write then
    entry = is_request and 4 + known.width or 0
  elseif not is_request then
    entry = 4 + known.width
  end
  return HEADER + tvb(8, 1):uint() * entry
end

local function dissect_frame(tvb, pinfo, root, is_request)
  pinfo.cols.protocol = "TAVMIR"
  local tree = root:add(tavmir, tvb())
  tree:add(f.transaction, tvb(0, 2))
  tree:add(f.protocol, tvb(2, 2))
  tree:add(f.length, tvb(4, 2))
  if tvb:len() < HEADER then
    tree:add_proto_expert_info(e.length)
    pinfo.cols.info:append(string.format("[%d bytes, no frame] ", tvb:len()))
    return
  end
  local transaction, station = tvb(0, 2):uint(), tvb(6, 1):uint()
  local func = tvb(7, 1):uint()
  local is_exception = func >= EXCEPTION and not is_request
  local known = FUNCTIONS[is_exception and func - EXCEPTION or func]
  tree:add(f.station, tvb(6, 1))
  tree:add(f.func, tvb(7, 1))

  local title = string.format("%s #%d station %d %s", is_request and "request" or "reply",
    transaction, station, known and known.words or "function " .. func)
  local marks, line = {}, ""
  if is_exception then
    local code = tvb(8, 1):uint()
    tree:add(f.exception, tvb(8, 1))
    local meaning = EXCEPTIONS[code]
    line = "exception " .. code .. (meaning and " (" .. meaning .. ")" or "")
    tree:add_proto_expert_info(e.exception, "Refused: " .. line)
  else
    tree:add(f.count, tvb(8, 1))
    if not known then
      tree:add_proto_expert_info(e.unknown)
      marks[#marks + 1] = "unknown function"
      if tvb:len() > HEADER then
        tree:add(f.rest, tvb(HEADER))
      end
    elseif known.write and not is_request then
      line = tvb(8, 1):uint() .. " done"
      if tvb:len() > HEADER then
        tree:add(f.rest, tvb(HEADER))
      end
    else
      line = show_entries(tree, tvb, known, known.write or not is_request, station)
    end
  end
  local right = right_length(tvb, known, is_request)
  if right and right ~= tvb:len() then
    tree:add_proto_expert_info(e.length,
      string.format("%d bytes where the count asks for %d", tvb:len(), right))
    marks[#marks + 1] = "wrong length"
  end

  local key = stream_of() .. " " .. transaction .. " " .. station
  local place = pinfo.number .. ":" .. tvb:offset() .. ":" .. key
  local look = found[place]
  if not look and not pinfo.visited then
    look = is_request and look_at_request(key, tvb, pinfo) or look_at_reply(key, pinfo)
    found[place] = look
  end
  if look and is_request and look.request then
    if look.request.reply then
      tree:add(f.response_in, look.request.reply):set_generated()
    elseif pinfo.visited then
      tree:add_proto_expert_info(e.unanswered)
      marks[#marks + 1] = "unanswered"
    end
  elseif look and not is_request then
    check_reply(tree, tvb, look, marks)
  end

  local mark = #marks > 0 and " [" .. table.concat(marks, ", ") .. "]" or ""
  local info = title .. (line ~= "" and ": " .. line or "") .. mark
  tree:append_text(": " .. info)
  pinfo.cols.info:append(info .. "  ")
end

-- Streams -------------------------------------------------------------------------------------

-- The bytes of the frame that begins at `offset`. What is no header takes the rest with it: where
-- the next frame begins, nobody can say.
local function frame_length(tvb, pinfo, offset)
  local left = tvb:len() - offset
  if left < LENGTH_END then
    return left -- the stream ends in a header
  end
  local after = tvb(offset + 4, 2):uint()
  if tvb(offset + 2, 2):uint() ~= 0 or after < 2 or after > MOST_AFTER then
    return left
  end
  return LENGTH_END + after
end

local function is_frame(tvb)
  local after = tvb:len() >= LENGTH_END and tvb(4, 2):uint() or 0
  return tvb:len() >= LENGTH_END and tvb(2, 2):uint() == 0 and after >= 2 and after <= MOST_AFTER
end

local function dissect_pdu(is_request)
  return function(tvb, pinfo, root)
    if is_frame(tvb) then
      dissect_frame(tvb, pinfo, root, is_request)
    else
      pinfo.cols.protocol = "TAVMIR"
      local tree = root:add(tavmir, tvb(), "Tavmir Controller Protocol: no frame begins here")
      tree:add(f.rest, tvb())
      tree:add_proto_expert_info(e.stream)
      pinfo.cols.info:append(string.format("[%d bytes, no frame] ", tvb:len()))
    end
    return tvb:len()
  end
end

-- Ports of controllers, to tell a request from a reply.
local controllers = {}

-- A function of this script's own: a dissector called by another one loses TCP's reassembly, and
-- what the reassembly throws would not come past Lua's frames unharmed.
local function dissect_stream(tvb, pinfo, root)
  if tvb:len() == 0 then
    return 0
  end
  pinfo.cols.info:clear()
  local is_request = not controllers[pinfo.src_port]
  if controllers[pinfo.dst_port] then
    -- A range may hold the host's port too; the lower one is the controller's then.
    is_request = is_request or pinfo.dst_port <= pinfo.src_port
  end
  dissect_tcp_pdus(tvb, root, LENGTH_END, frame_length, dissect_pdu(is_request))
  return tvb:len()
end

function tavmir.dissector(tvb, pinfo, root)
  return dissect_stream(tvb, pinfo, root)
end

-- On port 502 both protocols look the same up to the function code, in byte 7.
local port_502 = Proto("tavmir_502", "Tavmir Controller Protocol on port 502")
local neither = ProtoExpert.new("tavmir_502.neither", "A frame of neither protocol",
  expert.group.MALFORMED, expert.severity.ERROR)
port_502.experts = { neither }
local built_in = nil

-- Where the last whole frame of a segment ends, and how many bytes the next one lacks; nil when
-- one of them has no header.
local function whole_frames(tvb)
  local offset = 0
  while tvb:len() - offset >= 8 do
    local after = tvb(offset + 4, 2):uint()
    if tvb(offset + 2, 2):uint() ~= 0 or after < 2 or after > MOST_AFTER then
      return nil
    end
    if offset + LENGTH_END + after > tvb:len() then
      return offset, offset + LENGTH_END + after - tvb:len()
    end
    offset = offset + LENGTH_END + after
  end
  return offset, offset < tvb:len() and DESEGMENT_ONE_MORE_SEGMENT or 0
end

local function wait_for(pinfo, offset, missing)
  pinfo.desegment_offset = offset
  pinfo.desegment_len = missing
end

-- The built-in dissector gets whole frames only: what it throws for want of bytes would not come
-- past Lua's frames unharmed.
function port_502.dissector(tvb, pinfo, root)
  local offset, missing = whole_frames(tvb)
  if not offset then
    root:add(port_502, tvb()):add_proto_expert_info(neither)
    return tvb:len()
  end
  if missing ~= 0 then
    wait_for(pinfo, offset, missing)
  end
  if offset == 0 then
    return tvb:len()
  end
  local whole = tvb(0, offset):tvb()
  if FUNCTIONS[whole(7, 1):uint() % EXCEPTION] or not built_in then
    dissect_stream(whole, pinfo, root)
  else
    built_in:call(whole, pinfo, root)
  end
  return tvb:len()
end

-- Preferences ---------------------------------------------------------------------------------

local registered_ports, registered_502, names_file = nil, false, nil

local function ports_in(range)
  local ports = {}
  for from, to in range:gmatch("(%d+)%-?(%d*)") do
    for port = tonumber(from), tonumber(to) or tonumber(from) do
      ports[port] = true
    end
  end
  return ports
end

local function register()
  local tcp = DissectorTable.get("tcp.port")
  if registered_ports then
    tcp:remove(registered_ports, tavmir)
  end
  registered_ports = tavmir.prefs.ports
  controllers = ports_in(registered_ports)
  if registered_ports ~= "" then
    tcp:add(registered_ports, tavmir)
  end
  if tavmir.prefs.take_502 and not registered_502 then
    built_in = tcp:get_dissector(502)
    tcp:add(502, port_502)
  elseif registered_502 and not tavmir.prefs.take_502 then
    tcp:remove(502, port_502)
    if built_in then
      tcp:add(502, built_in)
    end
  end
  registered_502 = tavmir.prefs.take_502
  controllers[502] = controllers[502] or registered_502 or nil
  if names_file ~= tavmir.prefs.names then
    names_file = tavmir.prefs.names
    read_names(names_file)
  end
end

function tavmir.prefs_changed()
  register()
end

register()
