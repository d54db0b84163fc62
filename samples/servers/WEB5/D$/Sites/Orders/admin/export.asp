<% Server.ScriptTimeout = 1800 %>
