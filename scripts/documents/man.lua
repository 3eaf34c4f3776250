-- Makes a manual page of a page of docs/commands, for pandoc: its heading and first paragraph become the
-- section NAME, other headings move up, links to other commands become references such as gridkit-info(1).

local function is_command(target)
  return target:match("^[%w-]+%.md$") ~= nil
end

local inline = {
  Link = function(link)
    if is_command(link.target) then
      return { pandoc.Strong(link.target:gsub("%.md$", "")), pandoc.Str("(1)") }
    end
    return link.content
  end,
  Code = function(code)
    return pandoc.Strong(code.text)
  end,
}

local function heading(block)
  local capitals = pandoc.Header(block.level - 1, block.content)
  if block.level > 2 then return capitals end
  return pandoc.walk_block(capitals, {
    Str = function(word) return pandoc.Str(word.text:upper()) end,
  })
end

function Pandoc(document)
  local title, summary = table.unpack(document.blocks, 1, 2)
  assert(title.t == "Header" and title.level == 1, "a page begins with its command as a heading")
  assert(summary.t == "Para", "the first paragraph tells what the command does")
  local name = pandoc.utils.stringify(title):gsub(" ", "-")
  local words = pandoc.utils.stringify(summary):gsub("%.$", "")

  local blocks = pandoc.List({
    pandoc.Header(1, "NAME"),
    pandoc.Para(name .. " - " .. words),
  })
  for i = 3, #document.blocks do
    local block = document.blocks[i]
    blocks:insert(block.t == "Header" and heading(block) or pandoc.walk_block(block, inline))
  end
  document.meta.title = name:upper()
  document.meta.section = "1"
  return pandoc.Pandoc(blocks, document.meta)
end
